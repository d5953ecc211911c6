// A run gives the same files on one thread as on three, byte for byte: the
// workers take their turns in ever new orders on a small machine, and with
// TREMODAL_SMALL_SHARES=1 they share out even this model's small work (the
// rows of the double sums, the groups of modes, the ranges of equations, the
// blocks of the response files). The model has a square mass block, every
// freedom, all six directions, x and z modes of the same frequency, damping
// by mode and both passes of missing mass. That a failure is the same on one
// thread and three is held by the failure table.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using namespace testing;

TEST(ThreadCount, SameFilesOnOneThreadAndThree) {
    for (const std::string method : {"SRSS", "CQC", "GROUP", "DSM", "ABS"}) {
        SCOPED_TRACE(method);
        std::map<std::string, std::string> files[2];
        for (const int threads : {1, 3}) {
            const testing::ExampleModel model(
                "--storeys 12 --nodes-per-floor 3 --all-freedoms --mass-form square "
                "--mass-noise 0.05 --kz 1e6 --directions 123456 --comb " +
                method);
            WriteFile(model.File(".USD1"), "1,0.02\r\n2,0.03\r\n7,0.04\r\n-1\r\n");
            testing::EditOptions(model.modelPath, "1", [](ResponseOptions& o) {
                o.MissMassOn = 1;
                o.MissMassStartCase = "10";
                o.PrincipalAngle = 30;
                o.GroundX = 1;
            });
            const testing::RunSetting setting{.environment = "TREMODAL_SMALL_SHARES=1 TREMODAL_THREADS=" +
                                                             std::to_string(threads)};
            ASSERT_EQ(model.Run("1/20/1/", setting).status, 0);
            // The suite's solver standing in: displacements of the 39 nodes.
            for (const char* solved : {".R10", ".R11", ".R12"}) {
                std::string bytes(24, 'h');
                for (int v = 0; v < 39 * 6; ++v) bytes += testing::BytesF32(1e-4f * float(v % 11 - 5));
                WriteFile(model.File(solved), bytes);
            }
            ASSERT_EQ(model.Run("1/20/2/", setting).status, 0);
            // The combined base shears of every method are shown by the report.
            const testing::ProgramRun report = model.Run("--report 1 --csv tables", setting);
            files[threads / 3]["report"] = testing::MaskedRunText(report.out + report.err, model.dir.Path());
            for (const auto& entry : std::filesystem::recursive_directory_iterator(model.dir.Path())) {
                if (entry.is_regular_file())
                    files[threads / 3][entry.path().string().substr(model.dir.Path().size())] =
                        testing::MaskedRunText(ReadFile(entry.path().string()), model.dir.Path());
            }
        }
        ASSERT_EQ(files[0].size(), files[1].size());
        EXPECT_EQ(files[0].count("/tables/base_shear.csv"), 1u);
        for (const auto& [name, bytes] : files[0]) EXPECT_TRUE(files[1][name] == bytes) << name;
    }
}

}  // namespace
}  // namespace tremodal
