// The models laid out as the suite leaves them, the real program run on
// them and how a run ended.
#include "support/model_fixture.h"

#include <filesystem>
#include <stdexcept>

#include "input/options_file.h"
#include "run/analysis_driver.h"
#include "run/startup.h"

namespace tremodal::testing {

namespace {

std::string Placed(std::string text, const ModelFixture& model) {
    for (const auto& [token, path] :
         {std::pair<std::string, std::string>{"<M>", model.modelPath}, {"<D>", model.dir.Path()}}) {
        for (std::size_t at = text.find(token); at != std::string::npos; at = text.find(token, at))
            text.replace(at, token.size(), path);
    }
    return text;
}

}  // namespace

ProgramRun RunTreModal(const std::string& dir, const std::string& arguments, const RunSetting& setting) {
    return RunProgram(TREMODAL_BIN, dir, arguments, setting);
}

const char* const kFreshOptionsFile =
    "Frequency (Mass) Case Number         ,1\r\nResults Case Number                  ,20\r\n"
    "Single Mode (non-zero is active)     , 0 \r\nResponse Spectrum File               ,MODEL.URS1\r\n"
    "Spectrun Type  0-Disp 1-Vel 2-Accel  , 2\r\nSpecrum Curve Factor                 , 9.81\r\n"
    "Principal Direction                  , 0\r\nInterpolation Method 0-Linear 1-Log  , 0\r\n"
    "Spectrum Direction Definition\r\nDir Factors   On/Off\r\n 1             1 \r\n 0.5           0 \r\n"
    " 0.7           0 \r\n 0.0014875     0 \r\n 0.0025        0 \r\n 0.002125      0 \r\n"
    "Subsoil Shear Wave veleocity           , 400\r\n"
    "Rotation Datum (Ground)   X   Y   Z    , 0  0  0 \r\nModal Combination Method               , 1 \r\n"
    "Earthquake Duration (Secs)             , 10\r\nModal Damping Ratio                    , .05\r\n"
    "Element force sign is based on Mode    , 0 \r\nMissing Mass Case (1 is active)        , 0 ,0\r\n"
    "ZPZ Option (1 is higest mode)          , 1 \r\n";

ModelFixture::ModelFixture() : modelPath(dir.File("FRAME")) {
    WriteFile(dir.File("MODEL.NAM"), "\"" + modelPath + "\",\"FRAME\"\r\n");
    WriteFile(File(".XSZ"),
              "\"VARNEK\"\r\nFRAME\r\n\"Portal frame, two bays\"\r\nx1\r\nx2\r\nx3\r\n5,0,4,0\r\n"
              "t1\r\nt2\r\nt3\r\nt4\r\nt5\r\nt6\r\nt7\r\n1\r\n");
    std::string coordinates;
    for (int n = 1; n <= 4; ++n) {
        coordinates += BytesI16(static_cast<std::int16_t>(n)) + BytesF32(float(n)) + BytesF32(2.0f * n) +
                       BytesF32(-1.0f * n);
    }
    WriteFile(File(".XYZ"), coordinates);
    WriteFile(File(".USM3"), kFreshOptionsFile);
    WriteFile(File(".URS1"), "0,1\r\n10,1\r\n-1\r\n");
}

FrequencyCaseData FrameFrequencyCase() {
    FrequencyCaseData c;
    c.CaseNodes = 4;
    c.NumDof = 6;
    c.DirMass = {3, 3, 3, 0, 0, 0};
    c.Eigenvalues = {100, 400};
    c.NodeDof = {{0, 0, 0, 0, 0, 0}, {1, 0, 2, 0, 0, 0}, {3, 0, 4, 0, 0, 0}, {5, 0, 6, 0, 0, 0}};
    c.Shapes = {{0, 0.25f, 0, 0.5f, 0, 0.75f, 0}, {0, 0, 0.3f, 0, 0.6f, 0, -0.4f}};
    c.MassForm = 1;
    c.Masses = {1, 1, 1, 1, 1, 1};
    return c;
}

void ModelFixture::WriteFrequencyCase() const {
    WriteFile(File(".H1"), FrequencyCaseBytes(FrameFrequencyCase()));
}

void WriteStandInCasepostIn(const std::string& dir) {
    std::filesystem::create_directories(dir + "/bin");
    const std::string path = dir + "/bin/casepost";
    WriteFile(path, "#!/bin/sh\necho \"casepost ran in $(pwd)\" >> '" + dir + "/casepost.out'\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

int RunTreModalIn(const std::string& dir, const std::string& commandLine, int seconds,
                  const std::string& environment) {
    return RunTreModal(dir, commandLine, {.environment = environment, .seconds = seconds}).status;
}

void EditOptions(const std::string& modelPath, const std::string& number,
                 const std::function<void(ResponseOptions&)>& change, const std::string& to) {
    RunState state;
    state.Model.ModelPath = modelPath;
    state.Options.OptionsFile = modelPath + ".USM" + number;
    ReadOptions(state);
    change(state.Options);
    state.Options.OptionsFile = modelPath + ".USM" + (to.empty() ? number : to);
    WriteOptionsFile(state);
}

std::string FailureLine(int number, int stage) {
    return "TREMODAL  E " + std::to_string(number) + " ; L;  " + std::to_string(stage) +
           " ; Model Or Data; Error - Check; Model & Re - Run; ";
}

void SetOptionsLine(const std::string& path, const std::string& label, const std::string& line) {
    std::string text = ReadFile(path);
    const std::size_t at = text.find("\r\n" + label);
    if (at == std::string::npos) throw std::runtime_error("no options line " + label);
    const std::size_t end = text.find("\r\n", at + 2);
    text.replace(at + 2, end - at - 2, line);
    WriteFile(path, text);
}

Outcome Failed(int number, int stage, const std::string& plain, const std::string& logFile) {
    Outcome outcome = Told(FailureLine(number, stage), plain);
    outcome.logFile = logFile;
    return outcome;
}

Outcome Told(const std::string& line, const std::string& plain) {
    return {1, line, line + "\n" + plain + "\n", false};
}

Outcome RanOn(const std::string& err) { return {0, "", err, true}; }

::testing::AssertionResult EndedAs(const ModelFixture& model, const ProgramRun& run,
                                   const Outcome& expected) {
    ::testing::AssertionResult result = ::testing::AssertionFailure();
    const std::string log = expected.logFile.empty() ? model.File(".LOG") : model.dir.File(expected.logFile);
    const std::string err = Placed(expected.err, model);
    if (run.status != expected.status) return result << "status " << run.status << ", stderr:\n" << run.err;
    if (run.err != err) return result << "stderr:\n" << run.err << "expected:\n" << err;
    if (expected.log.empty() ? Exists(log) : !Exists(log) || ReadFile(log) != expected.log + "\r\n")
        return result << log << (Exists(log) ? " holds:\n" + ReadFile(log) : " is missing");
    if (Exists(model.dir.File("casepost.out")) != expected.casepost) return result << "casepost ran or not";
    if (Exists(model.dir.File("response.cnt")) != (expected.status == 0)) return result << "response.cnt";
    return ::testing::AssertionSuccess();
}

InProcessRun::InProcessRun(const std::string& dir, const std::string& commandLine) {
    host.Files1 = dir;
    host.Files2 = dir + "/bin";
    state.Ui = &host;
    if (Main(state, commandLine) != StartOutcome::BatchWaiting) {
        throw std::runtime_error("start-up failed: " + (host.Messages.empty() ? "" : host.Messages.back()));
    }
}

void InProcessRun::Analyze() {
    state.List1.clear();
    AnalyzeResponse(state);
}

void ModelFixture::WriteStandInCasepost() const { WriteStandInCasepostIn(dir.Path()); }

ProgramRun ModelFixture::Run(const std::string& commandLine, const RunSetting& setting) const {
    return testing::RunTreModal(dir.Path(), commandLine, setting);
}

int ModelFixture::RunTreModal(const std::string& commandLine, int seconds) const {
    const ProgramRun run = Run(commandLine, {.seconds = seconds});
    lastErr_ = run.err;
    return run.status;
}

ModelFixture::ModelFixture(const std::string& name) : modelPath(dir.File(name)) {}

ExampleModel::ExampleModel(const std::string& toolOptions) : ModelFixture("SHEAR") {
    const ProgramRun tool =
        RunProgram(EXAMPLE_TOOL, dir.Path(), "'" + dir.Path() + "' --name-file " + toolOptions);
    if (tool.status != 0) throw std::runtime_error("example tool failed: " + toolOptions + ": " + tool.err);
    WriteStandInCasepost();
}

}  // namespace tremodal::testing
