// What the run needs of the machine it runs on: the user settings store,
// message boxes and prompts, and the suite's child programs. The analysis
// sees only this interface; the Linux side implements it, and tests put in a
// fake that records what was shown and started.
#pragma once

#include <cstdio>
#include <string>

namespace tremodal {

enum class ChildState {
    Running,  // the only state that keeps the child wait going
    Ended,    // ended, crashed, or never started
};

class Host {
public:
    virtual ~Host() = default;

    // A text setting by application, section and key; empty when absent.
    virtual std::string ReadSetting(const std::string& application, const std::string& section,
                                    const std::string& key) = 0;
    // Where the settings of the application are looked for, to name it when
    // one is missing; empty when the store is no file.
    virtual std::string SettingsLocation(const std::string& /*application*/) { return {}; }

    // A message box with one OK button; returns when it is dismissed. Without
    // a screen the text goes to standard error and nothing waits.
    virtual void ShowMessage(const std::string& text, const std::string& title) = 0;

    // A text prompt with OK and Cancel; Cancel gives the empty text.
    virtual std::string Prompt(const std::string& title, const std::string& question,
                               const std::string& proposed) = 0;

    // Starts the program with no arguments, directly and without waiting; it
    // inherits the environment and the working directory. The child is kept
    // for PollChild; a start that fails leaves no child.
    virtual void StartChild(const std::string& program) = 0;
    // Asks without waiting whether the child started last is still running.
    virtual ChildState PollChild() = 0;

    // A plain line for the person, where the run goes on with something they
    // would not expect (a field read as 0, a curve it could not read, no
    // casepost to start). It names the file and what follows from it, and
    // never changes a file, a message, the log or the exit status.
    virtual void Note(const std::string& text) {
        std::fprintf(stderr, "TREMODAL note: %s\n", text.c_str());
        std::fflush(stderr);
    }
};

}  // namespace tremodal
