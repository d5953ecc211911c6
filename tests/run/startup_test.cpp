#include "run/startup.h"

#include <gtest/gtest.h>

#include <tuple>

#include "base/failure.h"

namespace tremodal {
namespace {

TEST(CommandLine, FieldsEndAtSlashesAndTheRestIsDropped) {
    for (const auto& [line, options, results, phase] :
         std::initializer_list<std::tuple<const char*, const char*, const char*, int>>{
             {"3/7/2/", "3", "7", 2},
             {"3/7", "3", "", 0},
             {"3/7/", "3", "7", 0},
             {"3", "", "", 0},
             {" 3 / 7 /1/9/", " 3 ", " 7 ", 1},
             {"3/7/2.5/", "3", "7", 2},
             {"3/7/3.5/x", "3", "7", 4},
             {"3/7/abc/", "3", "7", 0}}) {
        RunState s;
        SplitCommandLine(s, line);
        EXPECT_EQ(std::tuple(s.Options.OptionsNumber, s.Options.ResultsCase, s.RunPhase),
                  std::tuple(options, results, phase))
            << line;
    }
    RunState s;
    EXPECT_THROW(SplitCommandLine(s, "3/7/40000/"), Failure);
}

}  // namespace
}  // namespace tremodal
