// The Linux side of the host: the user settings store (the INI file that
// QSettings("VARNEK", "VARNEK") reads), the suite's child programs started
// directly and polled without waiting, and message boxes that go to standard
// error when there is no screen.
#pragma once

#include <sys/types.h>

#include "base/host.h"

namespace tremodal {

class LinuxHost : public Host {
public:
    ~LinuxHost() override;

    std::string ReadSetting(const std::string& application, const std::string& section,
                            const std::string& key) override;
    std::string SettingsLocation(const std::string& application) override;
    // Without a screen: one line "TREMODAL: <text>" on standard error, and the
    // run goes on as after the OK button.
    void ShowMessage(const std::string& text, const std::string& title) override;
    // Without a screen nobody can answer: the prompt counts as cancelled.
    std::string Prompt(const std::string& title, const std::string& question,
                       const std::string& proposed) override;
    void StartChild(const std::string& program) override;
    ChildState PollChild() override;

private:
    pid_t child_ = -1;
};

}  // namespace tremodal
