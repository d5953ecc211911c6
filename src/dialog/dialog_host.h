// What the dialog needs of the screen beyond the run's host: the clipboard,
// the wait cursor, a redraw in the middle of a command, the suite's editor and
// the end of the program. The Qt view implements it; tests record the calls.
#pragma once

#include <string>

namespace tremodal {

class DialogHost {
public:
    virtual ~DialogHost() = default;

    // Replaces the clipboard's contents with the text.
    virtual void SetClipboardText(const std::string& text) = 0;
    // The wait cursor while a run blocks the program, the normal one after.
    virtual void SetWaitCursor(bool waiting) = 0;
    // Shows the controls as the dialog's record holds them, at once.
    virtual void Refresh() = 0;
    // Starts the program with the file as its one argument, directly (never
    // through a shell) and without waiting. False when it cannot be started.
    virtual bool StartEditor(const std::string& program, const std::string& file) = 0;
    // Ends the program as soon as the command returns.
    virtual void EndProgram() = 0;
};

}  // namespace tremodal
