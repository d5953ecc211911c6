// "TreModal --report N": the summary, the tables and what is left on disk,
// from the real program on the example shear building, whose modes are known
// in closed form. Every base shear is worked out here again from the
// building's frequencies and participation factors, by the definitions of
// the five combination methods.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "base/run_state.h"
#include "input/options_file.h"
#include "support/test_support.h"
#include "tools/shear_building.h"

namespace tremodal {
namespace {

using example::BuildingMode;
using example::ShearBuilding;
using testing::ReadFile;
using testing::RunCommand;
using testing::TempDir;
using testing::WriteFile;

constexpr double kZeta = 0.05;                // the example options' damping ratio
constexpr double kDuration = 10;              // and duration, s
constexpr double kAcceleration = 0.3 * 9.81;  // the flat curve, times the curve factor

// The model in dir/model, named in dir/model/MODEL.NAM (Files1), the
// settings in dir/config: every file in dir/model belongs to the suite.
struct ReportRun {
    TempDir dir;
    ShearBuilding building;

    explicit ReportRun(const std::string& extra = "") {
        building.Storeys = 10;
        std::filesystem::create_directories(dir.File("config/VARNEK"));
        WriteFile(dir.File("config/VARNEK/VARNEK.conf"),
                  "[Setup]\nFiles1=" + Model("") + "\nFiles2=" + dir.File("bin") + "\n");
        const std::string tool = std::string("'") + EXAMPLE_TOOL + "' '" + Model("") +
                                 "' --name-file --storeys 10 --spectrum flat --flat-value 0.3 " + extra +
                                 " > /dev/null";
        if (RunCommand(tool) != 0) throw std::runtime_error("example tool failed: " + tool);
    }

    std::string Model(const std::string& name) const {
        return dir.File("model") + (name.empty() ? "" : "/" + name);
    }

    // Runs TreModal with these arguments and no screen; returns the status.
    int Run(const std::string& args) const {
        const std::string command =
            "cd '" + dir.Path() + "' && env -u DISPLAY -u WAYLAND_DISPLAY XDG_CONFIG_HOME='" +
            dir.File("config") + "' timeout 60 '" + TREMODAL_BIN + "' " + args + " > '" +
            dir.File("stdout.txt") + "' 2> '" + dir.File("stderr.txt") + "' < /dev/null";
        return RunCommand(command);
    }
    std::string Out() const { return ReadFile(dir.File("stdout.txt")); }
    std::string Err() const { return ReadFile(dir.File("stderr.txt")); }

    // Every file of the model's folder with its bytes.
    std::map<std::string, std::string> Folder() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(Model(""))) {
            if (entry.is_regular_file()) files[entry.path().string()] = ReadFile(entry.path().string());
        }
        return files;
    }

    // Options set `to`: set 1 of the example with the changes applied, written
    // by the program's own options writer.
    void DeriveOptions(const std::string& to, const std::function<void(ResponseOptions&)>& change) const {
        RunState state;
        state.Model.ModelPath = Model("SHEAR");
        state.Options.OptionsFile = Model("SHEAR.USM1");
        ReadOptions(state);
        change(state.Options);
        state.Options.OptionsFile = Model("SHEAR.USM" + to);
        WriteOptionsFile(state);
    }
};

// The modes of the building in the file's order, with the participation
// factor of each under a unit ground motion along direction 1, the major
// wave at `degrees` from x towards z, or 3, the minor wave 90 degrees on.
struct Mode {
    double omega, gamma;
};
std::vector<Mode> ModesAlong(const ShearBuilding& b, int direction, double degrees) {
    const double angle = degrees * example::kPi / 180 + (direction == 3 ? example::kPi / 2 : 0);
    std::vector<Mode> modes;
    for (const BuildingMode& m : example::SortedModes(b)) {
        const double along = m.Family == example::Sway::X ? std::cos(angle) : std::sin(angle);
        modes.push_back({m.Omega, along * example::ParticipationFactor(b.Storeys, b.StoreyMass, m.Order)});
    }
    return modes;
}

// The five combined base shears (SRSS, CQC, GROUP, DSM, ABS) of a direction
// with factor f, from the modal shears A = Gamma^2 Sa f.
std::vector<double> ExpectedShears(const std::vector<Mode>& modes, double f) {
    std::vector<double> a;
    for (const Mode& m : modes) a.push_back(m.gamma * m.gamma * kAcceleration * f);
    const std::size_t n = modes.size();
    double srss = 0, abs = 0, group = 0, cqc = 0, dsm = 0;
    for (std::size_t i = 0; i < n; ++i) {
        srss += a[i] * a[i];
        abs += a[i];
        // Ten per cent grouping: a pair of modes counts twice more when the
        // higher frequency exceeds the lower by at most a tenth of itself.
        group += a[i] * a[i];
        for (std::size_t j = i + 1; j < n; ++j) {
            if ((modes[j].omega - modes[i].omega) / modes[j].omega <= 0.1)
                group += 2 * std::fabs(a[i] * a[j]);
        }
        for (std::size_t j = 0; j < n; ++j) {
            // CQC for equal modal damping: rho = 8 zeta^2 (1 + r) r^1.5 /
            // ((1 - r^2)^2 + 4 zeta^2 r (1 + r)^2), r the frequency ratio.
            const double r = modes[j].omega / modes[i].omega;
            const double rho = 8 * kZeta * kZeta * (1 + r) * std::pow(r, 1.5) /
                               (std::pow(1 - r * r, 2) + 4 * kZeta * kZeta * r * std::pow(1 + r, 2));
            cqc += rho * a[i] * a[j];
            // Double sum: damped frequencies, damping raised by 2 / (T omega)
            // for a strong motion of duration T.
            const auto damped = [](const Mode& m) { return m.omega * std::sqrt(1 - kZeta * kZeta); };
            const auto raised = [](const Mode& m) { return kZeta + 2 / (kDuration * m.omega); };
            const double eps = (damped(modes[i]) - damped(modes[j])) /
                               (raised(modes[i]) * modes[i].omega + raised(modes[j]) * modes[j].omega);
            dsm += a[i] * a[j] / (1 + eps * eps);
        }
    }
    return {std::sqrt(srss), std::sqrt(cqc), std::sqrt(group), std::sqrt(dsm), abs};
}

std::vector<std::vector<std::string>> Csv(const std::string& path) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream in(ReadFile(path));
    std::string line;
    while (std::getline(in, line)) {
        EXPECT_TRUE(!line.empty() && line.back() == '\r') << "row without CR LF in " << path;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        std::vector<std::string> cells;
        std::string cell;
        std::istringstream fields(line);
        while (std::getline(fields, cell, ',')) cells.push_back(cell);
        if (!line.empty() && line.back() == ',') cells.push_back("");
        rows.push_back(cells);
    }
    return rows;
}

double Num(const std::string& text) {
    std::size_t used = 0;
    const double value = std::stod(text, &used);
    EXPECT_EQ(used, text.size()) << "not a plain number: " << text;
    return value;
}

void ExpectClose(double actual, double expected, double relative, const std::string& what) {
    EXPECT_NEAR(actual, expected, relative * std::max(1e-9, std::fabs(expected))) << what;
}

// The line of the summary that starts with the text.
std::string SummaryLine(const std::string& summary, const std::string& start) {
    std::istringstream in(summary);
    std::string line;
    while (std::getline(in, line)) {
        if (line.starts_with(start)) return line;
    }
    ADD_FAILURE() << "no line \"" << start << "\" in:\n" << summary;
    return "";
}

std::vector<double> Numbers(const std::string& line, std::size_t last) {
    std::istringstream in(line);
    std::vector<std::string> words{std::istream_iterator<std::string>(in), {}};
    std::vector<double> values;
    for (std::size_t i = words.size() >= last ? words.size() - last : 0; i < words.size(); ++i)
        values.push_back(Num(words[i]));
    return values;
}

TEST(Report, SummaryAndTablesMatchTheClosedFormAndNothingIsWrittenBesideTheModel) {
    // Storeys a little stiffer in z than in x, and the ground motion at 30
    // degrees, so that each direction moves both families and each x mode
    // has a z mode within ten per cent of its frequency: the five methods
    // then part clearly.
    ReportRun run("--kz 1.1e6");
    run.building.StiffnessZ = 1.1e6;
    run.DeriveOptions("2", [](ResponseOptions& o) { o.PrincipalAngle = 30; });
    const auto before = run.Folder();
    ASSERT_EQ(run.Run("--report 2 --csv '" + run.dir.File("tables") + "'"), 0) << run.Err();
    EXPECT_EQ(run.Err(), "");
    EXPECT_EQ(run.Folder(), before) << "the model's folder and Files1 stay as they were";

    const std::string summary = run.Out();
    EXPECT_NE(summary.find("Modes       20 in frequency case 1"), std::string::npos) << summary;
    EXPECT_NE(summary.find("acceleration, factor 9.81, linear interpolation"), std::string::npos) << summary;
    EXPECT_NE(SummaryLine(summary, "  Direction").find("CQC*"), std::string::npos)
        << "the options' method is marked";

    // Directions 1 (x, factor 1) and 3 (z, factor 0.7) are on.
    const std::vector<std::pair<int, double>> directions{{1, 1.0}, {3, 0.7}};
    const auto shearRows = Csv(run.dir.File("tables/base_shear.csv"));
    ASSERT_EQ(shearRows.size(), 3u);
    EXPECT_EQ(shearRows[0], (std::vector<std::string>{"direction", "SRSS", "CQC", "GROUP", "DSM", "ABS"}));
    const auto partRows = Csv(run.dir.File("tables/participation.csv"));
    ASSERT_EQ(partRows.size(), 41u);
    EXPECT_EQ(partRows[0], (std::vector<std::string>{"direction", "mode", "participation_factor",
                                                     "effective_mass", "cumulative_percent"}));
    for (std::size_t k = 0; k < directions.size(); ++k) {
        const auto [d, factor] = directions[k];
        SCOPED_TRACE("direction " + std::to_string(d));
        const std::vector<Mode> modes = ModesAlong(run.building, d, 30);
        const std::vector<double> expected = ExpectedShears(modes, factor);
        EXPECT_GT(expected[2], expected[0] * 1.1);
        EXPECT_GT(expected[1], expected[0] * 1.01);
        EXPECT_GT(expected[3], expected[0] * 1.01);

        const auto& row = shearRows[k + 1];
        ASSERT_EQ(row.size(), 6u);
        EXPECT_EQ(row[0], std::to_string(d));
        const char* names[] = {"SRSS", "CQC", "GROUP", "DSM", "ABS"};
        for (int m = 0; m < 5; ++m)
            ExpectClose(Num(row[m + 1]), expected[m], 2e-5, std::string("table ") + names[m]);
        // The summary shows four digits of each.
        const std::vector<double> shown = Numbers(SummaryLine(summary, "  " + std::to_string(d) + " "), 5);
        ASSERT_EQ(shown.size(), 5u);
        for (int m = 0; m < 5; ++m)
            ExpectClose(shown[m], expected[m], 6e-4, std::string("summary ") + names[m]);

        // Participation: Gamma of every mode, its square, the running share
        // of the building's 10,000 kg.
        double cumulative = 0;
        int reach = 0;
        for (std::size_t m = 0; m < modes.size(); ++m) {
            const auto& p = partRows[k * 20 + m + 1];
            ASSERT_EQ(p.size(), 5u);
            EXPECT_EQ(p[0], std::to_string(d));
            EXPECT_EQ(p[1], std::to_string(m + 1));
            const double gamma = modes[m].gamma;
            EXPECT_NEAR(std::fabs(Num(p[2])), std::fabs(gamma), 5e-6 * std::max(1.0, std::fabs(gamma)));
            EXPECT_NEAR(Num(p[3]), gamma * gamma, 1e-5 * std::max(1.0, gamma * gamma));
            cumulative += gamma * gamma;
            EXPECT_NEAR(Num(p[4]), cumulative / 10000 * 100, 1e-4);
            if (reach == 0 && cumulative >= 9000 * (1 + 1e-6)) reach = int(m + 1);
        }
        EXPECT_NE(summary.find("90 % is reached with " + std::to_string(reach) + " of 20 modes"),
                  std::string::npos);
    }

    // The modes on the flat curve: Sd = a / omega^2, Sv = a / omega, Sa = a.
    const auto modeRows = Csv(run.dir.File("tables/modes.csv"));
    ASSERT_EQ(modeRows.size(), 21u);
    EXPECT_EQ(modeRows[0].size(), 8u);
    const std::vector<BuildingMode> modes = example::SortedModes(run.building);
    for (std::size_t m = 0; m < modes.size(); ++m) {
        const auto& r = modeRows[m + 1];
        ASSERT_EQ(r.size(), 8u);
        const double w = modes[m].Omega;
        EXPECT_EQ(r[0], std::to_string(m + 1));
        ExpectClose(Num(r[1]), w, 2e-6, "omega");
        ExpectClose(Num(r[2]), w / (2 * example::kPi), 2e-6, "hertz");
        ExpectClose(Num(r[3]), 2 * example::kPi / w, 2e-6, "period");
        ExpectClose(Num(r[4]), kZeta, 1e-7, "damping");
        ExpectClose(Num(r[5]), kAcceleration / (w * w), 2e-6, "displacement");
        ExpectClose(Num(r[6]), kAcceleration / w, 2e-6, "velocity");
        ExpectClose(Num(r[7]), kAcceleration, 2e-6, "acceleration");
    }
}

TEST(Report, NotesNameSuspectInput) {
    // Two modes: x1 and z1, each 88 % of its direction's mass.
    ReportRun run("--modes 2 --mass-form square --spectrum design");
    // The design curve starts at period 0; with missing mass on, that is
    // where the pseudo-mode would take its frequency from.
    run.DeriveOptions("2", [](ResponseOptions& o) { o.MissMassOn = 1; });
    run.DeriveOptions("3", [](ResponseOptions& o) { o.SingleMode = 5; });
    const auto before = run.Folder();

    ASSERT_EQ(run.Run("--report 2"), 0) << run.Err();
    const std::string notes = run.Out().substr(run.Out().find("\nNotes\n"));
    EXPECT_NE(notes.find("square block: only its diagonal counts"), std::string::npos) << notes;
    EXPECT_NE(notes.find("first period is 0 while missing mass is on"), std::string::npos) << notes;
    // Each direction reaches the share of its first mode.
    const double first = example::EffectiveMass(10, 1000, 1) / 10000 * 100;
    char reached[16], left[16];
    std::snprintf(reached, sizeof reached, "%.2f", first);
    std::snprintf(left, sizeof left, "%.2f", 100 - first);
    for (const char* d : {"1", "3"}) {
        EXPECT_NE(notes.find(std::string("Direction ") + d + " reaches only " + reached +
                             " % with all its modes, below 90 %; the missing mass carries the rest."),
                  std::string::npos)
            << notes;
    }
    EXPECT_NE(
        run.Out().find(std::string("90 % is not reached; ") + left + " % is left to the missing mass (on)"),
        std::string::npos)
        << run.Out();

    ASSERT_EQ(run.Run("--report 3 --csv tables"), 0) << run.Err();
    EXPECT_NE(run.Out().find("Single mode 5 lies beyond the 2 modes"), std::string::npos) << run.Out();
    EXPECT_NE(run.Out().find("The run says: \"Only 2 modes exist\""), std::string::npos) << run.Out();
    // No direction pass, so no participation and no shear to tabulate.
    EXPECT_EQ(ReadFile(run.dir.File("tables/base_shear.csv")), "direction,SRSS,CQC,GROUP,DSM,ABS\r\n");
    EXPECT_EQ(run.Folder(), before);
}

TEST(Report, FailuresWriteNothingAndUsageErrorsSayHow) {
    ReportRun run;
    const auto before = run.Folder();
    const std::string outputs =
        " --csv '" + run.dir.File("tables") + "' --plots '" + run.dir.File("charts") + "'";
    const auto expectFailure = [&](const std::string& args, const std::string& named) {
        SCOPED_TRACE(args);
        EXPECT_EQ(run.Run(args + outputs), 1);
        const std::string err = run.Err();
        EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
        EXPECT_TRUE(err.starts_with("TreModal --report: ")) << err;
        EXPECT_NE(err.find(named), std::string::npos) << err;
        EXPECT_EQ(run.Out(), "");
        EXPECT_FALSE(std::filesystem::exists(run.dir.File("tables")));
        EXPECT_FALSE(std::filesystem::exists(run.dir.File("charts")));
    };
    expectFailure("--report 7", "SHEAR.USM7");
    expectFailure("--report 1 --model '" + run.dir.File("nowhere/FRAME") + "'", "FRAME.XSZ");
    for (const std::string args :
         {"--report", "--report --csv x", "--report 1 --bogus", "--report 1 --csv"}) {
        SCOPED_TRACE(args);
        EXPECT_EQ(run.Run(args), 2);
        EXPECT_NE(run.Err().find("usage: TreModal --report N [--model PATH] [--csv DIR] [--plots DIR]"),
                  std::string::npos)
            << run.Err();
    }
    EXPECT_EQ(run.Folder(), before);

    // A curve that cannot be read would give a summary of zeros.
    const std::string curve = ReadFile(run.Model("SHEAR.URS1"));
    WriteFile(run.Model("SHEAR.URS1"), "0.1, 0.3\r\n0.2\r\n");
    expectFailure("--report 1", "Error in Spectrum Data");
    std::filesystem::remove(run.Model("SHEAR.URS1"));
    expectFailure("--report 1", "SHEAR.URS1");
    WriteFile(run.Model("SHEAR.URS1"), curve);

    // --model takes a model that is not the current one, with no MODEL.NAM
    // and no Files1 at all.
    std::filesystem::remove(run.Model("MODEL.NAM"));
    WriteFile(run.dir.File("config/VARNEK/VARNEK.conf"), "[Setup]\n");
    EXPECT_EQ(run.Run("--report 1"), 1);
    EXPECT_NE(run.Err().find("Files1"), std::string::npos) << run.Err();
    EXPECT_EQ(run.Run("--report 1 --model '" + run.Model("SHEAR") + "'"), 0) << run.Err();
    EXPECT_TRUE(run.Out().starts_with("TreModal report of options set 1\nModel       " + run.Model("SHEAR")))
        << run.Out();
}

}  // namespace
}  // namespace tremodal
