// Helpers shared by the tests: a temporary directory that cleans up after
// itself, whole-file reads and writes, and a fake host that records the
// messages shown and the children started.
#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "base/host.h"
#include "dialog/dialog_host.h"

namespace tremodal::testing {

// A fresh directory under the system's temporary directory, removed with
// everything in it when the object goes.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& Path() const { return path_; }
    // Path + "/" + name.
    std::string File(const std::string& name) const;

private:
    std::string path_;
};

std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& bytes);
bool Exists(const std::string& path);

// The bytes of a file a run wrote with what may differ from one run to the
// next masked: the run's directory `dir` (as "<DIR>"), its date (as
// "DD/MM/YYYY") and its time (as "HH:MM:SS").
std::string MaskedRunText(std::string bytes, const std::string& dir);

// Runs a command through the shell and returns its exit status.
int RunCommand(const std::string& command);

// What a program run left on its two streams, and how it ended: its exit
// status, 124 when it was killed for taking too long.
struct ProgramRun {
    int status = -1;
    std::string out, err;
};

// How a program is run: the settings file names Files1 (the run's directory
// unless given) and Files2 = Files1/bin, written in dir/config unless
// `config` names a settings directory to take as it is; `environment` adds
// settings ("TREMODAL_THREADS=1"); with `screen`, DISPLAY is set and the
// offscreen platform stands in for the window system, else there is none.
struct RunSetting {
    std::string files1 = "";
    std::string config = "";
    std::string environment = "";
    bool screen = false;
    int seconds = 60;
};

// Runs `program` (TREMODAL_BIN, EXAMPLE_TOOL or another) with `arguments` in
// `dir`, standard input empty. Nothing but what the program writes is left
// in dir besides the settings.
ProgramRun RunProgram(const std::string& program, const std::string& dir, const std::string& arguments,
                      const RunSetting& setting = {});
ProgramRun RunTreModal(const std::string& dir, const std::string& arguments, const RunSetting& setting = {});

// The number of the failure an operation ends with, 0 when it ends normally;
// and the failure's description, empty when it ends normally.
int FailureOf(const std::function<void()>& operation);
std::string MessageOf(const std::function<void()>& operation);

// Little-endian bytes of a value, for building binary fixtures.
std::string BytesI16(std::int16_t v);
std::string BytesI32(std::int32_t v);
std::string BytesF32(float v);
std::string BytesF64(double v);

// A figure worked out by a test in double, as the picture "0.000E-00" shows
// it: four significant digits rounded half away from zero, "E", a minus sign
// only for a negative exponent, two exponent digits ("-6.131E00",
// "1.230E-02"). The figure must lie clear of a rounding boundary, so that the
// last bits that single precision leaves open cannot change the text; one
// that does not throws.
std::string ExponentText(double value);
// The same for the picture "0.000": three decimals.
std::string ThreeDecimalsText(double value);

class FakeHost : public Host {
public:
    std::string ReadSetting(const std::string& application, const std::string& section,
                            const std::string& key) override;
    void ShowMessage(const std::string& text, const std::string& title) override;
    std::string Prompt(const std::string& title, const std::string& question,
                       const std::string& proposed) override;
    void StartChild(const std::string& program) override;
    ChildState PollChild() override;

    std::string Files1, Files2;         // the settings
    std::vector<std::string> Messages;  // texts shown, in order
    std::vector<std::string> MessageTitles;
    std::vector<std::string> PromptAnswers;    // answers given in turn
    std::vector<std::string> PromptQuestions;  // "title|question|proposed"
    std::vector<std::string> ChildrenStarted;
    int PollsUntilEnded = 0;  // polls that report Running
    bool ChildStarted = false;
};

// The dialog's screen: records the clipboard, the cursor, redraws, editors
// started and the end of the program.
class FakeDialogHost : public DialogHost {
public:
    void SetClipboardText(const std::string& text) override { Clipboard.push_back(text); }
    void SetWaitCursor(bool waiting) override { Cursor.push_back(waiting); }
    void Refresh() override { ++Refreshes; }
    bool StartEditor(const std::string& program, const std::string& file) override {
        EditorsStarted.push_back(program + " " + file);
        return EditorStarts;
    }
    void EndProgram() override { Ended = true; }

    std::vector<std::string> Clipboard;  // texts put on it, in order
    std::vector<bool> Cursor;            // true for the wait cursor
    int Refreshes = 0;
    std::vector<std::string> EditorsStarted;  // "program file"
    bool EditorStarts = true;
    bool Ended = false;
};

}  // namespace tremodal::testing
