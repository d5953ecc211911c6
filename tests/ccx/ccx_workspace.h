// What the tests of tremodal-ccx share: a model folder in which they run
// tremodal-ccx, ccx itself and TreModal, the decks of their small models
// (tests/ccx/decks/), and the comparison to the digits ccx prints.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "ccx/ccx_files.h"
#include "support/model_fixture.h"
#include "support/test_support.h"

namespace tremodal::ccxtest {

using testing::ReadFile;
using testing::RunCommand;
using testing::WriteFile;

inline bool CcxInstalled() { return RunCommand("command -v ccx > /dev/null 2>&1") == 0; }

// ccx prints 7 significant digits and TreModal works in singles: a figure
// agrees when it is within 2 units of the 7th digit of the printed value, or
// within 1e-7 of the column's scale (the total mass, or its root for a
// participation factor) where ccx prints rounding noise.
inline bool Agrees(double trem, double printed, double scale, double extra = 0) {
    return std::fabs(trem - printed) <= 2e-6 * std::fabs(printed) + 1e-7 * scale + extra;
}

// A deck of tests/ccx/decks/.
inline std::string Deck(const std::string& name) {
    return ReadFile(std::string(TREMODAL_SOURCE_DIR) + "/tests/ccx/decks/" + name);
}

// The model folder: dir/deck.inp, the model dir/M, TreModal's settings, and
// dir/tmp as tremodal-ccx's $TMPDIR.
struct Workspace {
    testing::TempDir dir;
    std::string out, err;

    Workspace() {
        std::filesystem::create_directories(dir.File("tmp"));
        WriteFile(dir.File("MODEL.NAM"), "\"" + Model() + "\",\"M\"\r\n");
        testing::WriteStandInCasepostIn(dir.Path());
    }
    std::string Model() const { return dir.File("M"); }
    std::string File(const std::string& suffix) const { return Model() + suffix; }

    // tremodal-ccx with these arguments; its output in out and err.
    int TremCcx(const std::string& args, const std::string& environment = "") {
        const int status =
            RunCommand("cd '" + dir.Path() + "' && env TMPDIR='" + dir.File("tmp") + "' " + environment +
                       " '" + TREMODAL_CCX_BIN + "' " + args + " > out.txt 2> err.txt");
        out = ReadFile(dir.File("out.txt"));
        err = ReadFile(dir.File("err.txt"));
        return status;
    }

    // ccx itself on the deck with these steps, in dir/<job>; the .dat text.
    std::string Ccx(const std::string& deck, const std::string& steps, const std::string& job) const {
        std::filesystem::create_directories(dir.File(job));
        WriteFile(dir.File(job + "/" + job + ".inp"), deck + steps);
        if (RunCommand("cd '" + dir.File(job) + "' && ccx " + job + " > ccx.out 2>&1") != 0)
            throw std::runtime_error("ccx failed on " + job);
        return ReadFile(dir.File(job + "/" + job + ".dat"));
    }

    // Options set 1: the three translations on with factor 1, a curve in g
    // whose first point is at 0.03 s, missing mass on or off (cases from 10).
    void WriteOptions(bool missingMass) const {
        const std::string path = File(".USM1");
        WriteFile(path, testing::kFreshOptionsFile);
        testing::SetOptionsLine(path, " 0.5 ", " 1             1 ");
        testing::SetOptionsLine(path, " 0.7 ", " 1             1 ");
        testing::SetOptionsLine(
            path, "Missing Mass Case",
            std::string("Missing Mass Case (1 is active)        , ") + (missingMass ? "1" : "0") + " ,10");
        testing::SetOptionsLine(path, "ZPZ Option", "ZPZ Option (1 is higest mode)          , 0 ");
        WriteFile(File(".URS1"), "0.03,0.2\r\n0.1,0.5\r\n0.5,0.5\r\n1,0.25\r\n10,0.025\r\n-1\r\n");
    }

    // The rows of a CSV table that TreModal --report wrote, as numbers.
    std::vector<std::vector<double>> Csv(const std::string& name) const {
        std::vector<std::vector<double>> rows;
        std::istringstream in(ReadFile(dir.File("csv/" + name)));
        std::string line;
        std::getline(in, line);
        while (std::getline(in, line)) {
            std::vector<double> row;
            std::istringstream fields(line);
            for (std::string field; std::getline(fields, field, ',');)
                row.push_back(field.empty() ? 0.0 : std::stod(field));
            rows.push_back(row);
        }
        return rows;
    }
};

}  // namespace tremodal::ccxtest
