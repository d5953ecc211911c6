// File system and clock operations of the conventions: existence, deletion,
// and the date and time texts that files and records carry.
#pragma once

#include <ctime>
#include <functional>
#include <string>

#include "base/failure.h"

namespace tremodal {

// True when a regular file of that name exists: a directory, a FIFO or a
// device is no file, so a step that first asks whether its file exists takes
// any of them for a missing file.
bool FileExists(const std::string& path);

// True when a regular file of that name exists and the process may run it.
bool ProgramExists(const std::string& path);

// Opens a file for the readers and writers without ever waiting on it. Only a
// regular file is opened: a FIFO would wait at its open for the other end,
// and a device or a directory holds no file of the suite, so any of them in
// the file's place fails with 75. flags are those of open(2). Returns -1 with
// errno set when the open itself fails, so that the caller can tell a
// missing file from one it may not open.
int OpenRegularFile(const std::string& path, int flags, unsigned mode = 0);

// Deletes a file; 53 when it is not there, 75 when it cannot be removed.
void DeleteFile(const std::string& path);

// Makes a directory the process's working directory; 76 when it cannot.
void ChangeDirectory(const std::string& path);

// The moment "now" for every date and time the program writes. Tests set
// their own source so that files with dates come out the same every time.
std::time_t CurrentTime();
void SetClockSource(std::function<std::time_t()> source);

// The short date "DD/MM/YYYY", the time "HH:MM:SS" (24-hour), and the two
// with a blank between them, in local time.
std::string DateText(std::time_t moment);
std::string TimeText(std::time_t moment);
std::string DateTimeText(std::time_t moment);

}  // namespace tremodal
