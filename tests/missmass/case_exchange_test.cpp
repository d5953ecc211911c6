// The solved missing mass case read back from the solver's results file: a
// 24-byte header, then six singles for every node.
#include "missmass/case_exchange.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace tremodal {
namespace {

TEST(CaseExchange, ACaseThatEndsInsideItsNodeResultsIsInvalid) {
    std::string bytes(24, '\0');
    for (int k = 1; k <= 12; ++k) bytes += testing::BytesF32(0.5f * f32(k));
    for (const std::size_t length : {bytes.size(), bytes.size() - 1, std::size_t(48), std::size_t(24)}) {
        testing::TempDir dir;
        testing::FakeHost host;
        RunState s;
        s.Ui = &host, s.Model.ModelPath = dir.File("FRAME"), s.MissMassCase = " 10";
        s.Model.NumNodes = 2, s.Freq.NumDof = 1, s.Freq.NumModes = 1;
        AllocateRunArrays(s);
        s.Freq.NodeDof(2, 3) = 1;  // node 2's z
        s.ModalDamping(1) = 0.05f, s.Curve.CurvePeriod(1) = 0.03f;
        testing::WriteFile(dir.File("FRAME.R10"), bytes.substr(0, length));
        ReadMissMassResults(s);
        if (length == bytes.size()) {
            // Node 2's z. The pseudo-mode's frequency and damping are the
            // missing mass run's part.
            EXPECT_TRUE(host.Messages.empty() && s.MissMassRead == 1);
            EXPECT_EQ(s.MissMassDof(1), 4.5f);
        } else {
            // The direction goes on without the pseudo-mode.
            EXPECT_EQ(host.Messages,
                      std::vector<std::string>{"Missing Mass Case 10 Results not found or invalid"});
            EXPECT_EQ(s.MissMassRead, 0) << length;
        }
    }
}

}  // namespace
}  // namespace tremodal
