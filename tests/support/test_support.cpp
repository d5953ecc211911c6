// The shared test support: files, the program runner, the fake hosts, and
// the models laid out as the suite leaves them.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "base/failure.h"
#include "input/options_file.h"
#include "run/analysis_driver.h"
#include "run/startup.h"
#include "support/model_fixture.h"

namespace tremodal::testing {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tremodal-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::File(const std::string& name) const { return path_ + "/" + name; }

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) throw std::runtime_error("cannot write " + path);
    out << bytes;
}

bool Exists(const std::string& path) { return std::filesystem::exists(path); }

namespace {
// Puts `picture` in the place of every stretch of the bytes that has its
// form, a digit for each letter and the other characters as they are
// ("DD/MM/YYYY" for "25/11/2026"). The picture's first separator is looked
// for, and the form checked around it: a regular expression, or a check at
// every byte, takes seconds over the megabytes of a large run.
void MaskPicture(std::string& bytes, const std::string& picture) {
    const std::size_t n = picture.size();
    const std::size_t mark = picture.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    for (std::size_t at = bytes.find(picture[mark], mark); at != std::string::npos;
         at = bytes.find(picture[mark], at + 1)) {
        const std::size_t start = at - mark;
        if (start + n > bytes.size()) break;
        std::size_t k = 0;
        for (; k < n; ++k) {
            const char c = bytes[start + k], p = picture[k];
            if (p >= 'A' && p <= 'Z' ? c < '0' || c > '9' : c != p) break;
        }
        if (k < n) continue;
        bytes.replace(start, n, picture);
        at = start + n - 1;
    }
}

// Rounds `scaled` half away from zero; refuses a value within a thousandth
// of a unit of the half way point.
long long RoundClearOfHalf(double scaled) {
    const double whole = std::floor(scaled);
    if (std::fabs(scaled - whole - 0.5) < 1e-3) {
        throw std::runtime_error("figure too close to a rounding boundary: " + std::to_string(scaled));
    }
    return static_cast<long long>(scaled - whole >= 0.5 ? whole + 1 : whole);
}

std::string Placed(std::string text, const ModelFixture& model) {
    for (const auto& [token, path] :
         {std::pair<std::string, std::string>{"<M>", model.modelPath}, {"<D>", model.dir.Path()}}) {
        for (std::size_t at = text.find(token); at != std::string::npos; at = text.find(token, at))
            text.replace(at, token.size(), path);
    }
    return text;
}

}  // namespace

std::string MaskedRunText(std::string bytes, const std::string& dir) {
    const std::string token = "<DIR>";
    for (std::size_t at = bytes.find(dir); at != std::string::npos; at = bytes.find(dir, at + token.size())) {
        bytes.replace(at, dir.size(), token);
    }
    MaskPicture(bytes, "DD/MM/YYYY");
    MaskPicture(bytes, "HH:MM:SS");
    return bytes;
}

int RunCommand(const std::string& command) {
    int status = std::system(command.c_str());
    if (status == -1 || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

ProgramRun RunProgram(const std::string& program, const std::string& dir, const std::string& arguments,
                      const RunSetting& setting) {
    std::string config = setting.config;
    if (config.empty()) {
        const std::string files1 = setting.files1.empty() ? dir : setting.files1;
        config = dir + "/config";
        std::filesystem::create_directories(config + "/VARNEK");
        WriteFile(config + "/VARNEK/VARNEK.conf",
                  "[Setup]\nFiles1=" + files1 + "\nFiles2=" + files1 + "/bin\n");
    }
    const std::string screen =
        setting.screen ? "DISPLAY=:99 QT_QPA_PLATFORM=offscreen" : "-u DISPLAY -u WAYLAND_DISPLAY";
    const TempDir streams;
    ProgramRun run;
    run.status = RunCommand("cd '" + dir + "' && env " + screen + " XDG_CONFIG_HOME='" + config + "' " +
                            setting.environment + " timeout " + std::to_string(setting.seconds) + " '" +
                            program + "' " + arguments + " > '" + streams.File("out") + "' 2> '" +
                            streams.File("err") + "' < /dev/null");
    run.out = ReadFile(streams.File("out"));
    run.err = ReadFile(streams.File("err"));
    return run;
}

ProgramRun RunTreModal(const std::string& dir, const std::string& arguments, const RunSetting& setting) {
    return RunProgram(TREMODAL_BIN, dir, arguments, setting);
}

std::string ExponentText(double value) {
    if (value == 0) return "0.000E00";
    int exponent = static_cast<int>(std::floor(std::log10(std::fabs(value))));
    long long digits = RoundClearOfHalf(std::fabs(value) / std::pow(10.0, exponent) * 1000);
    if (digits >= 10000) {
        digits /= 10;
        ++exponent;
    }
    char text[64];
    std::snprintf(text, sizeof text, "%s%lld.%03lldE%s%02d", value < 0 ? "-" : "", digits / 1000,
                  digits % 1000, exponent < 0 ? "-" : "", std::abs(exponent));
    return text;
}

std::string ThreeDecimalsText(double value) {
    const long long thousandths = RoundClearOfHalf(std::fabs(value) * 1000);
    char text[40];
    std::snprintf(text, sizeof text, "%s%lld.%03lld", value < 0 ? "-" : "", thousandths / 1000,
                  thousandths % 1000);
    return text;
}

// The number and the description of the failure an operation ends with.
static std::pair<int, std::string> Caught(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const Failure& failure) {
        return {failure.Number(), failure.what()};
    }
    return {0, ""};
}
int FailureOf(const std::function<void()>& operation) { return Caught(operation).first; }
std::string MessageOf(const std::function<void()>& operation) { return Caught(operation).second; }

template <class T>
static std::string Bytes(T v) {
    std::string out(sizeof v, '\0');
    std::memcpy(out.data(), &v, sizeof v);  // the test machines are little-endian
    return out;
}
std::string BytesI16(std::int16_t v) { return Bytes(v); }
std::string BytesI32(std::int32_t v) { return Bytes(v); }
std::string BytesF32(float v) { return Bytes(v); }
std::string BytesF64(double v) { return Bytes(v); }

std::string FakeHost::ReadSetting(const std::string& application, const std::string& section,
                                  const std::string& key) {
    if (application != "VARNEK" || section != "Setup") return "";
    if (key == "Files1") return Files1;
    if (key == "Files2") return Files2;
    return "";
}

void FakeHost::ShowMessage(const std::string& text, const std::string& title) {
    Messages.push_back(text);
    MessageTitles.push_back(title);
}

std::string FakeHost::Prompt(const std::string& title, const std::string& question,
                             const std::string& proposed) {
    PromptQuestions.push_back(title + "|" + question + "|" + proposed);
    if (PromptAnswers.empty()) return "";
    std::string answer = PromptAnswers.front();
    PromptAnswers.erase(PromptAnswers.begin());
    return answer;
}

void FakeHost::StartChild(const std::string& program) {
    ChildrenStarted.push_back(program);
    ChildStarted = true;
}

ChildState FakeHost::PollChild() {
    if (ChildStarted && PollsUntilEnded > 0) {
        --PollsUntilEnded;
        return ChildState::Running;
    }
    return ChildState::Ended;
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
