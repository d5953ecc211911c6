#include "fuzz_support.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "base/arrays.h"

namespace tremodal::fuzz {

namespace {

std::string& WorkDir() {
    static std::string dir;
    return dir;
}

void RemoveWorkDir() {
    std::error_code ignored;
    if (!WorkDir().empty()) std::filesystem::remove_all(WorkDir(), ignored);
}

}  // namespace

namespace {

const char* const kFileMark = "\n@@FILE@@\n";

// Removes every file of the previous input, so that no input sees another's.
void ClearFiles() {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(".", ignored)) {
        std::filesystem::remove_all(entry.path(), ignored);
    }
}

}  // namespace

Run::Run(const std::uint8_t* data, std::size_t size) : input_(reinterpret_cast<const char*>(data), size) {
    ClearFiles();
    Ui.Files1 = ".";
    Ui.Files2 = "./bin";
    State.Ui = &Ui;
    State.Model.FilesDir = Ui.Files1;
    State.Model.ProgramDir = Ui.Files2;
    State.Model.ModelPath = "FUZZ";
    State.Model.ModelName = "FUZZ";
}

std::uint8_t Run::TakeU8() {
    if (input_.empty()) return 0;
    const auto value = static_cast<std::uint8_t>(input_.front());
    input_.remove_prefix(1);
    return value;
}

std::int16_t Run::TakeI16() {
    const unsigned low = TakeU8();
    const unsigned high = TakeU8();
    return static_cast<std::int16_t>(low | (high << 8));
}

void Run::WriteRest(const std::string& name) const { WriteFile(name, input_); }

std::vector<std::string_view> Run::SplitFiles() const {
    std::vector<std::string_view> parts;
    const std::string_view mark(kFileMark);
    std::string_view rest = input_;
    for (std::size_t at = rest.find(mark); at != std::string_view::npos; at = rest.find(mark)) {
        parts.push_back(rest.substr(0, at + 1));
        rest.remove_prefix(at + mark.size());
    }
    parts.push_back(rest);
    return parts;
}

void WriteFile(const std::string& name, std::string_view bytes) {
    std::ofstream out(name, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace tremodal::fuzz

namespace {

// The fuzzer takes its corpus directories, inputs and artifact paths from the
// command line after LLVMFuzzerInitialize: those given relative to the
// starting directory are made absolute before the working directory changes.
// Findings go to the starting directory unless told otherwise.
void KeepPathsAbsolute(int* argc, char*** argv, const std::string& start) {
    static std::vector<std::string> args;
    static std::vector<char*> pointers;
    const auto absolute = [&start](const std::string& path) {
        return path.empty() || path[0] == '/' ? path : start + "/" + path;
    };
    bool artifactPrefix = false;
    for (int i = 0; i < *argc; ++i) {
        std::string arg = (*argv)[i];
        bool changed = false;
        for (const char* flag : {"-artifact_prefix=", "-exact_artifact_path=", "-dict="}) {
            const std::string name(flag);
            if (arg.compare(0, name.size(), name) == 0) {
                arg = name + absolute(arg.substr(name.size()));
                artifactPrefix = artifactPrefix || name == "-artifact_prefix=";
                changed = true;
            }
        }
        if (i > 0 && !changed && arg[0] != '-') arg = absolute(arg);
        args.push_back(arg);
    }
    if (!artifactPrefix) args.push_back("-artifact_prefix=" + start + "/");
    for (std::string& arg : args) pointers.push_back(arg.data());
    pointers.push_back(nullptr);
    *argc = static_cast<int>(args.size());
    *argv = pointers.data();
}

}  // namespace

// Once per process: a private directory becomes the working directory, so
// that every model file an input becomes stays in it (the model is "FUZZ"
// there), and the run arrays get a budget of their own. Under
// AddressSanitizer a header that takes 1 GiB costs a second or more of
// allocation alone, over the fuzzer's time limit on a busy machine; 64 MiB
// still lets through headers of millions of equations, and every path a
// larger one would take.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/tremodal-fuzz-XXXXXX";
    char* start = ::getcwd(nullptr, 0);
    if (!start || !::mkdtemp(pattern.data()) || ::chdir(pattern.c_str()) != 0) {
        std::perror("tremodal fuzz: no working directory");
        std::abort();
    }
    KeepPathsAbsolute(argc, argv, start);
    std::free(start);
    tremodal::fuzz::WorkDir() = pattern;
    std::atexit(tremodal::fuzz::RemoveWorkDir);
    tremodal::SetMemoryBudget(std::int64_t{64} << 20);
    return 0;
}
