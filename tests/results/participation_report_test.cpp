#include "results/participation_report.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FailureOf;

// Two modes at 1 Hz and 2 Hz with participation factors 3 and 1 (effective
// masses 9 and 1) on an excited mass of 20.
class ParticipationReport : public ::testing::Test {
protected:
    void SetUp() override {
        s.Freq.NumModes = 2;
        s.Freq.Omega.Allocate(3);
        s.Freq.Omega(1) = 6.2831855f;
        s.Freq.Omega(2) = 12.566371f;
        s.Participation.Allocate(2);
        s.Participation(1) = 3;
        s.Participation(2) = -1;
        s.ModalDamping.Allocate(3);
        s.ModalDamping(1) = 0.05f;
        s.ModalDamping(2) = 0.004f;
        s.ExcitedMass = 20;
        s.Freq.DirMass(1) = 25;
        s.List1 = {"before"};
    }

    RunState s;
};

TEST_F(ParticipationReport, TranslationListsEveryLineBehindWhatStands) {
    ReportParticipation(s, 1);
    const std::vector<std::string> expected = {
        "before",
        " ",
        "Total Mass (excl mass on rest.) 2.000E+01  Load Case Mass 2.500E+01",
        "Excitation X Direction  1",
        "Mode    Freq   Freq    Period     Modal    Cumulative       Damping",
        "No      Rad/s  Hertz   Seconds   Eff Mass   Eff Mass   %    Ratio ",
        " ",
        " 1      6.28    1.00    1.0000  9.000E+00  9.000E+00  45.00  0.05",
        " 2     12.57    2.00    0.5000  1.000E+00  1.000E+01  50.00  0.00",
        " ",
    };
    EXPECT_EQ(s.List1, expected);
    EXPECT_EQ(s.List1[7].size(), 65u);

    // The running sum starts again in the next direction.
    s.List1.clear();
    ReportParticipation(s, 3);
    EXPECT_EQ(s.List1[2], "Excitation Z Direction  3");
    EXPECT_EQ(s.List1[6], " 1      6.28    1.00    1.0000  9.000E+00  9.000E+00  45.00  0.05");
}

TEST_F(ParticipationReport, RotationRowsHaveNoShareOfMass) {
    // With no excited mass a rotation still reports: it divides by nothing.
    s.ExcitedMass = 0;
    ReportParticipation(s, 4);
    EXPECT_EQ(s.List1[2], "Total Mass (excl mass on rest.) 0.000E+00  Load Case Mass 2.500E+01");
    EXPECT_EQ(s.List1[3], "Excitation Rx Rotation  4");
    EXPECT_EQ(s.List1[7], " 1      6.28    1.00    1.0000  9.000E+00  9.000E+00  0.05");
    EXPECT_EQ(s.List1[8], " 2     12.57    2.00    0.5000  1.000E+00  1.000E+01  0.00");
    EXPECT_EQ(s.List1[7].size(), 58u);

    s.List1.clear();
    ReportParticipation(s, 6);
    EXPECT_EQ(s.List1[2], "Excitation Rz Rotation  6");
}

TEST_F(ParticipationReport, ZeroExcitedMassFailsInATranslation) {
    s.ExcitedMass = 0;
    EXPECT_EQ(FailureOf([&] { ReportParticipation(s, 2); }), kDivisionByZero);
    s.ExcitedMass = 20;
    s.Freq.Omega(2) = 0;
    EXPECT_EQ(FailureOf([&] { ReportParticipation(s, 2); }), kDivisionByZero);
}

TEST_F(ParticipationReport, ModeNumbersFromOneHundredFillTheColumn) {
    s.Freq.NumModes = 100;
    s.Freq.Omega.Allocate(101);
    s.Participation.Allocate(100);
    s.ModalDamping.Allocate(101);
    for (int m = 1; m <= 100; ++m) {
        s.Freq.Omega(m) = 100;
        s.Participation(m) = 0.5f;
        s.ModalDamping(m) = 0.02f;
    }
    s.ExcitedMass = 50;
    s.List1.clear();
    ReportParticipation(s, 2);
    // 100 × 0.25 = 25, half the excited mass.
    EXPECT_EQ(s.List1[104], " 99   100.00   15.92    0.0628  2.500E-01  2.475E+01  49.50  0.02");
    EXPECT_EQ(s.List1[105], " 100  100.00   15.92    0.0628  2.500E-01  2.500E+01  50.00  0.02");
    EXPECT_EQ(s.List1[106], " ");
    EXPECT_EQ(s.List1.size(), 107u);
}

}  // namespace
}  // namespace tremodal
