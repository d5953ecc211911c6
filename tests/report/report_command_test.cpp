// "TreModal --report N": the summary, the tables and what is left on disk,
// from the real program. On the small frame every figure is known by hand to
// the last bit of a single, so the tables are compared as text, each single
// the shortest decimal that gives it back, and the summary line by line. The base shears of the methods
// themselves are checked with the combinations; here only that each lands in
// its own column.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>

#include "support/closed_form.h"
#include "support/model_fixture.h"
#include "tools/shear_building.h"

namespace tremodal {
namespace {

using namespace testing;

// A single as the tables show it: the shortest decimal that gives it back.
std::string Cell(double value) {
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, float(value)).ptr);
}

// Every file of the model's folder with its bytes.
std::map<std::string, std::string> Folder(const ModelFixture& f) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(f.dir.Path())) {
        if (entry.is_regular_file()) files[entry.path().string()] = ReadFile(entry.path().string());
    }
    return files;
}

// Whether `text` holds `part`.
::testing::AssertionResult Has(const std::string& text, const std::string& part) {
    if (text.find(part) != std::string::npos) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << part << "\nnot in\n" << text;
}

// The report run in `cwd`, the model's folder being Files1.
ProgramRun Report(const ModelFixture& f, const TempDir& cwd, const std::string& arguments) {
    return testing::RunTreModal(cwd.Path(), "--report " + arguments, {.files1 = f.dir.Path()});
}

// The frame (eigenvalues 100 and 400, so omega 10 and 20; unit masses; the
// flat curve of 1 g times 9.81) with the rotations 4 to 6 on beside
// direction 1. Node n stands at x = n, y = 2n, z = -n: mode 1 sways x by
// 0.25, 0.5 and 0.75 at nodes 2 to 4.
TEST(Report, TheFramesTablesAndSummaryToTheLastDigit) {
    ModelFixture f;
    f.WriteFrequencyCase();
    EditOptions(f.modelPath, "3", [](ResponseOptions& o) { o.DirOn(4) = o.DirOn(5) = o.DirOn(6) = 1; });
    TempDir cwd;
    const auto before = Folder(f);
    // The charts are drawn by the windows program, whichever way --plots is
    // given its folder.
    const ProgramRun run = Report(f, cwd, "3 --csv=" + cwd.File("tables") + " --plots=" + cwd.File("a"));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(Folder(f), before) << "the model's folder stays as it was";
    EXPECT_TRUE(testing::Exists(cwd.File("a/spectrum.png")) &&
                testing::Exists(cwd.File("a/participation-1.png")));

    const double pi = std::acos(-1.0), sa = double(9.81f);
    std::string modes;
    for (const int m : {1, 2}) {
        const double omega = 10.0 * m;
        modes += std::to_string(m) + "," + Cell(omega) + "," + Cell(omega / (2 * pi)) + "," +
                 Cell(2 * pi / omega) + "," + Cell(0.05f) + "," + Cell(sa / (omega * omega)) + "," +
                 Cell(sa / omega) + "," + Cell(sa) + "\r\n";
    }
    EXPECT_EQ(ReadFile(cwd.File("tables/modes.csv")),
              "mode,circular_frequency [rad/s],frequency [Hz],period [s],damping_ratio,spectral_displacement "
              "[in],spectral_velocity [in/s],spectral_acceleration [in/s2]\r\n" +
                  modes);

    // Direction 1 moves 3 of mass, mode 1 Gamma 1.5 of it. The rotation 6
    // moves x by minus the height y (arms 4, 6, 8: inertia 116, Gamma of
    // mode 1 -10); the rotation 5 moves x by z and z by x (arms 2, 3, 4 in
    // each: inertia 58, Gamma -5). Mode 2 sways z alone: its figures in the
    // rotations are the roundings of singles and only its place is checked.
    const std::string participation = ReadFile(cwd.File("tables/participation.csv"));
    EXPECT_TRUE(
        participation.starts_with("direction,mode,participation_factor [lbf s2/in^0.5; (lbf s2 in)^0.5 for 4 "
                                  "to 6],effective_mass [lbf s2/in; lbf s2 in for 4 to 6],cumulative [%]\r\n"
                                  "1,1,1.5,2.25,75\r\n1,2,0,0,75\r\n4,1,0,0,0\r\n4,2,"))
        << participation;
    for (const std::string& row : {"\r\n5,1,-5,25," + Cell(25.0 / 58 * 100) + "\r\n5,2,",
                                   "\r\n6,1,-10,100," + Cell(100.0 / 116 * 100) + "\r\n6,2,"})
        EXPECT_TRUE(Has(participation, row));
    // Only the translations have a base shear; every method gives the one
    // mode's shear 2.25 x 9.81.
    const std::string shear = ReadFile(cwd.File("tables/base_shear.csv"));
    ASSERT_TRUE(shear.starts_with("direction,SRSS [lbf],CQC [lbf],GROUP [lbf],DSM [lbf],ABS [lbf]\r\n1,"))
        << shear;
    EXPECT_EQ(std::count(shear.begin(), shear.end(), '\n'), 2) << shear;
    for (std::size_t at = shear.find("\n1,") + 2; at < shear.size() - 2; at = shear.find(',', at + 1))
        EXPECT_NEAR(std::stod(shear.substr(at + 1)), 2.25 * sa, 2e-5) << shear;

    for (const char* line : {
             "Modes       2 in frequency case 1, 1.592 to 3.183 Hz (periods 0.3142 to 0.6283 s)",
             "Damping     0.05 of critical in every mode without one of its own",
             "Duration    10 s of strong motion",
             "Principal   at 0 deg from X toward Z",
             "Direction 1, Principal (Major wave), along X, factor 1, mass 3.000E+00",
             "  Mode    Freq Hz   Period s    Eff mass   Cumul %",
             "     1      1.592     0.6283   2.250E+00     75.00",
             "     2      3.183     0.3142   0.000E+00     75.00",
             "  90 % is not reached; 25.00 % is left to the missing mass (off: left out)",
             "Direction 6, Rotation (Major wave), about Z, factor 0.002125, inertia 1.160E+02",
             "     1      1.592     0.6283   1.000E+02     86.21",
             "            acceleration, factor 9.81, linear interpolation",
             "  Direction                       SRSS         CQC*  10% Group         DSM     ABS Sum",
             "  1 Principal (Major wave)   2.207E+01   2.207E+01   2.207E+01   2.207E+01   2.207E+01",
         }) {
        EXPECT_TRUE(Has(run.out, "\n" + std::string(line) + "\n"));
    }
}

// Modes that reach all of the mass pass 100 % by a rounding of singles: one
// mode swaying x by the single just above 1 / sqrt(3) at each of the three
// unit masses. Nothing is left to the missing mass.
TEST(Report, ModesPastAllTheMassByRoundingLeaveNothingToTheMissingMass) {
    ModelFixture f;
    testing::FrequencyCaseData c = testing::FrameFrequencyCase();
    const float a = std::nextafter(float(1 / std::sqrt(3.0)), 1.0f);
    c.Shapes[0] = {0, a, 0, a, 0, a, 0};
    testing::WriteFile(f.File(".H1"), testing::FrequencyCaseBytes(c));
    EditOptions(f.modelPath, "3", [](ResponseOptions& o) { o.MissMassOn = 1; });
    TempDir cwd;
    const ProgramRun run = Report(f, cwd, "3 --csv " + cwd.File("tables") + " --plots " + cwd.File("b"));
    ASSERT_EQ(run.status, 0) << run.err;
    const float gamma = float(3.0 * a), mass = float(double(gamma) * gamma),
                percent = float(mass / 3.0 * 100);
    ASSERT_GT(percent, 100.0f);
    EXPECT_TRUE(testing::Exists(cwd.File("b/spectrum.png")));
    EXPECT_TRUE(Has(ReadFile(cwd.File("tables/participation.csv")),
                    "\r\n1,1," + Cell(gamma) + "," + Cell(mass) + "," + Cell(percent) + "\r\n"));
    EXPECT_TRUE(Has(run.out, "\n     1      1.592     0.6283   3.000E+00    100.00\n"));
    EXPECT_TRUE(
        Has(run.out, "\n  90 % is reached with 1 of 2 modes; 0.00 % is left to the missing mass (on)\n"));
}

// The motion at 30 degrees moves mode 1 (x, Gamma 1.5 cos 30) and mode 2 (z,
// Gamma 0.5 sin 30), a full octave apart: grouping joins nothing and gives
// SRSS, the absolute sum is the largest, and the double sums lie between,
// DSM's correlation (about 0.035) above CQC's (about 0.019).
TEST(Report, EachMethodInItsOwnColumn) {
    ModelFixture f;
    f.WriteFrequencyCase();
    EditOptions(f.modelPath, "3", [](ResponseOptions& o) { o.PrincipalAngle = 30; });
    TempDir cwd;
    ASSERT_EQ(Report(f, cwd, "3 --csv " + cwd.File("t")).status, 0);
    const std::string shear = ReadFile(cwd.File("t/base_shear.csv"));
    double srss, cqc, group, dsm, abs;
    ASSERT_EQ(std::sscanf(shear.c_str() + shear.find("\n1,") + 3, "%lf,%lf,%lf,%lf,%lf", &srss, &cqc, &group,
                          &dsm, &abs),
              5)
        << shear;
    const double sa = 9.81, a1 = 1.5 * 1.5 * 0.75 * sa, a2 = 0.25 * 0.25 * sa;
    EXPECT_NEAR(srss, std::hypot(a1, a2), 1e-4);
    EXPECT_EQ(group, srss);
    EXPECT_NEAR(abs, a1 + a2, 1e-4);
    EXPECT_GT(cqc, srss * 1.0005);
    EXPECT_GT(dsm, cqc * 1.0005);
    EXPECT_LT(dsm, abs);
}

// The shear building's storey shears against its closed form. Under a flat
// curve every mode takes the same Sa, so mode n's shear at floor j is
// Gamma_n Sa m sum of phi_n over the floors from j up, and SRSS combines the
// x family. The lowest level gives the base shear of every method, to the
// last digit.
TEST(Report, StoreyShearsFollowTheClosedFormAndEndInTheBaseShear) {
    const testing::ExampleModel model("--spectrum flat --directions 1 --comb SRSS");
    TempDir cwd;
    ASSERT_EQ(Report(model, cwd, "1 --csv t").status, 0);
    std::vector<std::vector<std::string>> rows;
    for (const char* name : {"t/storey_shear.csv", "t/base_shear.csv"}) {
        std::stringstream text(ReadFile(cwd.File(name)));
        for (std::string line; std::getline(text, line);) {
            rows.emplace_back();
            std::stringstream cells(line.substr(0, line.size() - 1));
            for (std::string cell; std::getline(cells, cell, ',');) rows.back().push_back(cell);
        }
    }
    ASSERT_EQ(rows.size(), 1 + 5 + 1 + 1u);
    EXPECT_EQ(rows[0][1], "height [m]");
    const double sa = 0.3 * double(9.81f), m = 1000;
    for (int j = 5; j >= 1; --j) {
        const std::vector<std::string>& row = rows[std::size_t(6 - j)];
        double sum = 0;
        for (int n = 1; n <= 5; ++n) {
            double above = 0;
            for (int i = j; i <= 5; ++i) above += m * closed_form::ShapeValue(5, m, n, i);
            sum += std::pow(closed_form::ParticipationFactor(5, m, n) * sa * above, 2);
        }
        EXPECT_EQ(row[1], std::to_string(3 * j));
        EXPECT_NEAR(std::stod(row[2]), std::sqrt(sum), 2e-6 * std::sqrt(sum)) << "floor " << j;
        EXPECT_GE(std::stod(row[6]), std::stod(row[2])) << "the absolute sum bounds every other";
    }
    rows[5].erase(rows[5].begin() + 1);
    EXPECT_EQ(rows[5], rows[7]) << "the lowest level against the base shear";
}

TEST(Report, NotesNameSuspectInput) {
    // Two modes: x1 and z1, each 88 % of its direction's mass.
    const testing::ExampleModel model("--storeys 10 --modes 2 --mass-form square --spectrum design");
    // The design curve starts at period 0; with missing mass on, that is
    // where the pseudo-mode would take its frequency from.
    EditOptions(
        model.modelPath, "1", [](ResponseOptions& o) { o.MissMassOn = 1; }, "2");
    EditOptions(
        model.modelPath, "1", [](ResponseOptions& o) { o.SingleMode = 5; }, "3");
    // A curve factor and a damping of 0, and no direction on.
    EditOptions(
        model.modelPath, "1",
        [](ResponseOptions& o) { o.CurveFactor = o.DampingRatio = 0, o.DirOn(1) = o.DirOn(3) = 0; }, "4");
    TempDir cwd;
    const auto before = Folder(model);

    ProgramRun run = Report(model, cwd, "2");
    ASSERT_EQ(run.status, 0) << run.err;
    const std::string notes = run.out.substr(run.out.find("\nNotes\n"));
    EXPECT_TRUE(Has(notes, "square block: only its diagonal counts"));
    EXPECT_TRUE(Has(notes, "first period is 0 while missing mass is on"));
    // Each direction reaches the share of its first mode.
    const double first = example::EffectiveMass(10, 1000, 1) / 10000 * 100;
    char reached[16], left[16];
    std::snprintf(reached, sizeof reached, "%.2f", first);
    std::snprintf(left, sizeof left, "%.2f", 100 - first);
    for (const char* d : {"1", "3"}) {
        EXPECT_TRUE(Has(notes, std::string("Direction ") + d + " reaches only " + reached +
                                   " % with all its modes, below 90 %; the missing mass carries the rest."));
    }
    EXPECT_TRUE(
        Has(run.out, std::string("90 % is not reached; ") + left + " % is left to the missing mass (on)"));

    run = Report(model, cwd, "4");
    for (const char* note : {"The curve factor is 0: every spectral value, response and base shear is 0.",
                             "The damping ratio is 0: modes without a damping of their own are undamped",
                             "No direction is on: nothing takes part and there is no base shear."})
        EXPECT_TRUE(Has(run.out, std::string("\n  - ") + note));

    run = Report(model, cwd, "3 --csv tables");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(Has(run.out, "Single mode 5 lies beyond the 2 modes"));
    EXPECT_TRUE(Has(run.out, "The run says: \"Only 2 modes exist\""));
    // No direction pass, so no participation and no shear to tabulate.
    EXPECT_EQ(ReadFile(cwd.File("tables/base_shear.csv")),
              "direction,SRSS [N],CQC [N],GROUP [N],DSM [N],ABS [N]\r\n");
    EXPECT_EQ(Folder(model), before);
}

TEST(Report, FailuresWriteNothingAndUsageErrorsSayHow) {
    const testing::ExampleModel model("--storeys 10 --spectrum flat");
    const auto before = Folder(model);
    TempDir cwd;
    const std::string outputs = " --csv '" + cwd.File("tables") + "' --plots '" + cwd.File("charts") + "'";
    const auto expectFailure = [&](const std::string& args, const std::string& named) {
        SCOPED_TRACE(args);
        const ProgramRun run = Report(model, cwd, args + outputs);
        EXPECT_TRUE(run.status == 1 && run.out.empty() && run.err.starts_with("TreModal --report: ") &&
                    std::count(run.err.begin(), run.err.end(), '\n') == 1 && Has(run.err, named))
            << run.err;
        EXPECT_FALSE(testing::Exists(cwd.File("tables")) || testing::Exists(cwd.File("charts")));
    };
    expectFailure("7", "SHEAR.USM7");
    expectFailure("1 --model '" + cwd.File("nowhere/FRAME") + "'", "FRAME.XSZ");
    const std::string usage = "usage: TreModal --report N [--model PATH] [--csv DIR] [--plots DIR]\n";
    const std::pair<std::string, std::string> wrong[] = {
        {"", "--report needs an options number"},
        {"--csv x", "--report needs an options number, not \"--csv\""},
        {"1 --bogus", "unknown argument \"--bogus\""},
        {"1 --csv", "--csv needs a value"},
        {"1 --csv a --csv=b", "--csv is given twice"},
        {"1 --plots=a --plots b", "--plots is given twice"},
    };
    for (const auto& [args, what] : wrong) {
        const ProgramRun run = Report(model, cwd, args);
        EXPECT_EQ(std::pair(run.status, run.err), std::pair(2, "TreModal: " + what + "\n" + usage));
    }
    EXPECT_EQ(Folder(model), before);

    // A curve that cannot be read, and a model without node coordinates: the
    // report goes on as a batch run goes on, says so, and leaves no file.
    const std::string curve = ReadFile(model.File(".URS1")), coordinates = ReadFile(model.File(".XYZ"));
    std::filesystem::remove(model.File(".URS1"));
    std::filesystem::remove(model.File(".XYZ"));
    const ProgramRun goesOn = Report(model, cwd, "1");
    EXPECT_EQ(goesOn.status, 0) << goesOn.err;
    EXPECT_TRUE(Has(goesOn.out, "\n  - " + model.File(".URS1") + ": no such file; the run goes on without"));
    EXPECT_TRUE(Has(goesOn.out, "\n  - The run says: \"Error in Spectrum Data\"\n"));
    EXPECT_FALSE(testing::Exists(model.File(".XYZ")));
    testing::WriteFile(model.File(".URS1"), curve);
    testing::WriteFile(model.File(".XYZ"), coordinates);

    // --model takes a model that is not the current one, with no MODEL.NAM
    // and no Files1 at all.
    std::filesystem::remove(model.dir.File("MODEL.NAM"));
    const TempDir config;
    const ProgramRun none = testing::RunTreModal(cwd.Path(), "--report 1", {.config = config.Path()});
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(Has(none.err, "Files1"));
    const ProgramRun named = testing::RunTreModal(cwd.Path(), "--report 1 --model '" + model.modelPath + "'",
                                                  {.config = config.Path()});
    EXPECT_EQ(named.status, 0) << named.err;
    EXPECT_TRUE(named.out.starts_with("TreModal report of options set 1\nModel       " + model.modelPath))
        << named.out;
}

}  // namespace
}  // namespace tremodal
