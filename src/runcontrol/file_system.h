// File system and clock operations of the conventions: existence, deletion,
// and the date and time texts that files and records carry.
#pragma once

#include <ctime>
#include <functional>
#include <string>

#include "runcontrol/failure.h"

namespace tremodal {

// True when a regular file of that name exists (a directory is not a file).
bool FileExists(const std::string& path);

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
