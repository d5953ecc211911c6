// The host when the program has a screen: message boxes and prompts are real
// modal windows that wait for the user.
#pragma once

#include "platform/linux_host.h"

namespace tremodal {

class ScreenHost : public LinuxHost {
public:
    void ShowMessage(const std::string& text, const std::string& title) override;
    std::string Prompt(const std::string& title, const std::string& question,
                       const std::string& proposed) override;
};

}  // namespace tremodal
