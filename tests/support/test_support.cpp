// The shared test support: files, the program runner and the fake hosts.
#include "support/test_support.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "base/failure.h"

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

}  // namespace tremodal::testing
