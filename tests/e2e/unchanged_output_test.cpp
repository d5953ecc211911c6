// The files of a run must stay byte for byte what they were when this test was
// written, whatever is done to make the program faster. Two moderate models,
// one lumped and one with a square mass block and rotations, cover every
// writer of an ordinary run. The fingerprints were taken from the program as
// it stood before any work on speed; a change here means a changed result.
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::ReadFile;

// FNV-1a, 64 bits: enough to tell one file from another.
std::uint64_t Fingerprint(const std::string& bytes) {
    std::uint64_t hash = 14695981039346656037ull;
    for (unsigned char c : bytes) {
        hash ^= c;
        hash *= 1099511628211ull;
    }
    return hash;
}

// The run of the example model written with `toolArguments`: the
// fingerprints of its `outputs`, named after `run`.
void RunAndFingerprint(const std::string& run, const std::string& toolArguments,
                       const std::vector<std::string>& outputs,
                       std::map<std::string, std::uint64_t>& prints) {
    const testing::ExampleModel model(toolArguments);
    EXPECT_EQ(model.Run("1/20/").status, 0);
    for (const std::string& name : outputs)
        prints[run + " " + name] =
            Fingerprint(testing::MaskedRunText(ReadFile(model.dir.File(name)), model.dir.Path()));
}

TEST(UnchangedOutput, EveryWrittenFileOfThreeModels) {
    std::map<std::string, std::uint64_t> prints;
    RunAndFingerprint(
        "lumped", "--storeys 40 --nodes-per-floor 3 --all-freedoms --modes 60 --directions 123 --comb CQC",
        {"SHEAR.HS1", "SHEAR.HS2", "SHEAR.HS3", "SHEAR.L20", "SHEAR.W20", "SHEAR.120", "SHEAR.220",
         "SHEAR.NSL", "response.cnt"},
        prints);
    // 6,005 nodes: a response block of 36,030 freedoms is written in more
    // than one piece, the last of them short. The effective mass 143249.6875
    // of mode 1 is a single of six decimals (1/64 apart at this size) and
    // its four-decimal picture in SHEAR.L20 shows it whole: "143249.6875",
    // not the nine-digit "143249.6880".
    RunAndFingerprint(
        "blocks", "--storeys 1200 --nodes-per-floor 5 --all-freedoms --modes 4 --directions 13 --comb SRSS",
        {"SHEAR.HS1", "SHEAR.HS3", "SHEAR.L20"}, prints);
    // A square mass block with rotations under each combination.
    for (const char* method : {"SRSS", "GROUP", "DSM", "ABS"}) {
        RunAndFingerprint(
            method,
            std::string("--storeys 12 --nodes-per-floor 2 --all-freedoms --modes 20 --mass-form square "
                        "--mass-noise 0.05 --directions 123456 --comb ") +
                method,
            {"SHEAR.HS1", "SHEAR.HS4", "SHEAR.HS6", "SHEAR.L20", "SHEAR.120", "SHEAR.220"}, prints);
    }
    const std::map<std::string, std::uint64_t> expected = {
        {"ABS SHEAR.120", 15287891661129272509ull},   {"ABS SHEAR.220", 10728177014185588206ull},
        {"ABS SHEAR.HS1", 3209784707147609020ull},    {"ABS SHEAR.HS4", 9984485631673247020ull},
        {"ABS SHEAR.HS6", 7341262957870017788ull},    {"ABS SHEAR.L20", 6366729874619780664ull},
        {"DSM SHEAR.120", 15287891661129272509ull},   {"DSM SHEAR.220", 10171600115125991691ull},
        {"DSM SHEAR.HS1", 4901571405114145039ull},    {"DSM SHEAR.HS4", 1663800518915209175ull},
        {"DSM SHEAR.HS6", 12377475557505573559ull},   {"DSM SHEAR.L20", 14032627782110623064ull},
        {"GROUP SHEAR.120", 15287891661129272509ull}, {"GROUP SHEAR.220", 6571055090170620570ull},
        {"GROUP SHEAR.HS1", 18221674879372501478ull}, {"GROUP SHEAR.HS4", 896258808664487598ull},
        {"GROUP SHEAR.HS6", 205563167193351102ull},   {"GROUP SHEAR.L20", 11968808103380641950ull},
        {"SRSS SHEAR.120", 15287891661129272509ull},  {"SRSS SHEAR.220", 9971165547821064460ull},
        {"SRSS SHEAR.HS1", 3567960872156796960ull},   {"SRSS SHEAR.HS4", 17884398663827174096ull},
        {"SRSS SHEAR.HS6", 6288666743295468592ull},   {"SRSS SHEAR.L20", 4167700606266519920ull},
        {"blocks SHEAR.HS1", 211174432892365361ull},  {"blocks SHEAR.HS3", 15614104904605579366ull},
        {"blocks SHEAR.L20", 7093280322450422315ull}, {"lumped SHEAR.120", 13424457592026288669ull},
        {"lumped SHEAR.220", 4273277574130670768ull}, {"lumped SHEAR.HS1", 17911405036323928648ull},
        {"lumped SHEAR.HS2", 8248900691687747698ull}, {"lumped SHEAR.HS3", 7515506482739169932ull},
        {"lumped SHEAR.L20", 9743635788666941101ull}, {"lumped SHEAR.NSL", 7215119952037326015ull},
        {"lumped SHEAR.W20", 5359939413570032255ull}, {"lumped response.cnt", 15589206520319261822ull},
    };
    EXPECT_EQ(prints, expected);
}

}  // namespace
}  // namespace tremodal
