#include "base/text_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "base/checked_math.h"
#include "base/file_system.h"
#include "base/number_text.h"

namespace tremodal {

namespace {

// Big enough that a model file of a few hundred thousand lines costs a
// handful of reads, small enough that nothing sizeable is held in memory.
constexpr std::size_t kInputBuffer = 64 * 1024;

// The longest field or line a read takes. The suite's longest texts are file
// names and titles, a few hundred characters; a text far beyond any of them
// is no file of the suite, and holding it whole would be an allocation
// without bound (a file of a billion characters without a comma or a line
// end). Such a text fails as an allocation that cannot be satisfied, 7.
constexpr std::size_t kLongestText = 1024 * 1024;

// A print zone is 14 columns wide; zones start at columns 1, 15, 29, ...
constexpr int kZoneWidth = 14;

// Output text moves on to its temporary file in runs of this size.
constexpr std::size_t kSpillSize = 4 * 1024 * 1024;

bool IsBlank(int c) { return c == ' ' || c == '\t'; }
bool IsLineEnd(int c) { return c == '\r' || c == '\n'; }

// "<path>: cannot be read (Permission denied)".
std::string Describe(const std::string& path, const char* what) {
    return path + ": " + what + " (" + std::strerror(errno) + ")";
}

// Writes all of the bytes, going on after a short write or an interrupt.
bool WriteAll(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t done = ::write(fd, data, size);
        if (done < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += done;
        size -= static_cast<std::size_t>(done);
    }
    return true;
}

// The permissions a newly created file gets from the process: rw for all,
// less the umask. umask can only be read by setting it, so it is set back at once.
mode_t NewFileMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

}  // namespace

// ---------------------------------------------------------------------------
// Text input

TextInput::TextInput(const std::string& path) : path_(path) {
    fd_ = OpenRegularFile(path, O_RDONLY);
    if (fd_ < 0) {
        if (errno == ENOENT || errno == ENOTDIR) Fail(kFileNotFound, path + ": no such file");
        Fail(kPathAccessError, Describe(path, "cannot be opened"));
    }
    buffer_.resize(kInputBuffer);
}

TextInput::~TextInput() {
    if (fd_ >= 0) ::close(fd_);
}

void TextInput::Close() {
    if (fd_ < 0) return;
    ::close(fd_);  // Don't retry close on EINTR: the descriptor is gone either way.
    fd_ = -1;
}

void TextInput::Take(std::string& text, int c) {
    if (text.size() >= kLongestText) {
        Fail(kOutOfMemory,
             "a field or line of more than " + std::to_string(kLongestText) + " characters in " + path_);
    }
    text.push_back(static_cast<char>(c));
}

void TextInput::Require(const char* what) {
    if (fd_ < 0) Fail(kBadFileMode, std::string(what) + " on a file that is not open: " + path_);
}

void TextInput::Refill() {
    pos_ = 0;
    len_ = 0;
    for (;;) {
        const ssize_t got = ::read(fd_, buffer_.data(), buffer_.size());
        if (got >= 0) {
            len_ = static_cast<std::size_t>(got);
            return;
        }
        if (errno != EINTR) Fail(kPathAccessError, Describe(path_, "cannot be read"));
    }
}

int TextInput::Peek() {
    if (pos_ == len_) Refill();
    if (len_ == 0) return -1;
    return static_cast<unsigned char>(buffer_[pos_]);
}

int TextInput::Get() {
    const int c = Peek();
    if (c < 0) return c;
    ++pos_;
    // LF, CR LF and CR each end one line.
    if (c == '\r' || (c == '\n' && !afterCr_)) ++line_;
    afterCr_ = c == '\r';
    atLineStart_ = IsLineEnd(c);
    return c;
}

void TextInput::FailAtEnd() {
    // The last line that holds anything: a file that ends with a line end
    // has no line behind it.
    const std::int64_t last = atLineStart_ ? line_ - 1 : line_;
    if (last == 0) Fail(kInputPastEnd, path_ + ": is empty where fields are expected");
    Fail(kInputPastEnd,
         path_ + ": ends after line " + GroupedDigits(last) + ", before all its fields are read");
}

void TextInput::FailField(const Failure& failure, const char* reason) {
    Fail(failure.Number(), path_ + ", line " + GroupedDigits(fieldLine_) + ": \"" + field_ + "\" " + reason);
}

void TextInput::SkipLineEnd() {
    const int c = Peek();
    if (c == '\r') {
        Get();
        if (Peek() == '\n') Get();
    } else if (c == '\n') {
        Get();
    }
}

bool TextInput::AtEnd() {
    Require("end of file test");
    return Peek() < 0;
}

std::string TextInput::ReadTextField() {
    Require("input");
    while (IsBlank(Peek())) Get();
    if (Peek() < 0) FailAtEnd();

    std::string field;
    if (Peek() == '"') {
        Get();
        // Everything up to the closing quote, a comma or a line end included.
        for (int c = Get(); c >= 0 && c != '"'; c = Get()) Take(field, c);
        // Whatever follows the closing quote on the field is thrown away.
        for (int c = Peek(); c >= 0 && c != ',' && !IsLineEnd(c); c = Peek()) Get();
    } else {
        for (int c = Peek(); c >= 0 && c != ',' && !IsLineEnd(c); c = Peek()) {
            Take(field, c);
            Get();
        }
        while (!field.empty() && IsBlank(static_cast<unsigned char>(field.back()))) field.pop_back();
    }
    if (Peek() == ',') {
        Get();
    } else {
        SkipLineEnd();
    }
    return field;
}

f64 TextInput::ReadNumberField() {
    Require("input");
    for (int c = Peek(); IsBlank(c) || IsLineEnd(c); c = Peek()) Get();
    if (Peek() < 0) FailAtEnd();

    fieldLine_ = line_;
    field_.clear();
    for (int c = Peek(); c >= 0 && c != ',' && !IsBlank(c) && !IsLineEnd(c); c = Peek()) {
        Take(field_, c);
        Get();
    }
    // One separator belongs to the field: a comma, or else a line end. Blanks
    // before it go too, so "0 ,x" and "0 \r\nx" both leave the cursor on x.
    while (IsBlank(Peek())) Get();
    if (Peek() == ',') {
        Get();
    } else {
        SkipLineEnd();
    }
    return Converted([&] { return Val(field_); }, "is too large for a number");
}

f32 TextInput::ReadSingleField() {
    const f64 value = ReadNumberField();
    return Converted([&] { return StoreF32(value); }, "is too large for a single-precision field");
}

i16 TextInput::ReadI16Field() {
    const f64 value = ReadNumberField();
    return Converted([&] { return RoundToI16(value); }, "does not fit a 16-bit integer field");
}

i32 TextInput::ReadI32Field() {
    const f64 value = ReadNumberField();
    return Converted([&] { return RoundToI32(value); }, "does not fit a 32-bit integer field");
}

std::string TextInput::ReadLine() {
    Require("line input");
    if (Peek() < 0) FailAtEnd();
    std::string line;
    for (int c = Peek(); c >= 0 && !IsLineEnd(c); c = Peek()) {
        Take(line, c);
        Get();
    }
    SkipLineEnd();
    return line;
}

// ---------------------------------------------------------------------------
// Print files

PrintFile::PrintFile(const std::string& path, TextMode mode) : path_(path), mode_(mode) {
    // A symbolic link keeps pointing where it did: the file behind it is the
    // one replaced.
    struct stat info {};
    if (::lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode)) {
        if (char* real = ::realpath(path.c_str(), nullptr)) {
            path_ = real;
            std::free(real);
        }
    }

    if (mode_ == TextMode::Append) {
        fd_ = OpenRegularFile(path_, O_WRONLY | O_CREAT | O_APPEND, 0666);
        if (fd_ < 0) Fail(kPathAccessError, Describe(path_, "cannot be opened"));
        return;
    }

    // Output replaces the file. It must be one that could be opened for
    // writing, though the new text reaches it only by the rename at Close.
    if (::stat(path_.c_str(), &info) == 0) {
        if (!S_ISREG(info.st_mode)) Fail(kPathAccessError, path_ + ": is not a regular file");
        if (::access(path_.c_str(), W_OK) != 0) Fail(kPathAccessError, Describe(path_, "cannot be written"));
    }
    tempPath_ = path_ + ".tmpXXXXXX";
    fd_ = ::mkstemp(tempPath_.data());
    if (fd_ < 0) {
        tempPath_.clear();
        Fail(kPathAccessError, Describe(path_, "cannot be created"));
    }
}

PrintFile::~PrintFile() { Discard(); }

void PrintFile::Discard() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
    if (!tempPath_.empty()) ::unlink(tempPath_.c_str());
    tempPath_.clear();
}

void PrintFile::Require() const {
    if (fd_ < 0) Fail(kBadFileMode, "print on a file that is not open: " + path_);
}

PrintFile& PrintFile::Item(std::string_view text) {
    Require();
    text_.append(text);
    for (char c : text) column_ = IsLineEnd(static_cast<unsigned char>(c)) ? 1 : column_ + 1;
    return *this;
}

void PrintFile::SpillIfLarge() {
    // An output file goes to its temporary name anyway, so a large text need
    // not sit whole in memory: it moves on to the temporary file in big runs.
    // An appended text waits for Close, so that a failure adds nothing.
    if (mode_ != TextMode::Output || text_.size() < kSpillSize) return;
    if (!WriteAll(fd_, text_.data(), text_.size())) {
        const std::string why = Describe(path_, "cannot be written");
        Discard();
        Fail(kPathAccessError, why);
    }
    text_.clear();
}

PrintFile& PrintFile::NextZone() {
    Require();
    const int next = ((column_ - 1) / kZoneWidth + 1) * kZoneWidth + 1;
    text_.append(static_cast<std::size_t>(next - column_), ' ');
    column_ = next;
    return *this;
}

PrintFile& PrintFile::Tab(int column) {
    Require();
    if (column < 1) column = 1;
    if (column_ > column) {
        text_.append("\r\n");
        column_ = 1;
    }
    text_.append(static_cast<std::size_t>(column - column_), ' ');
    column_ = column;
    return *this;
}

PrintFile& PrintFile::EndLine() {
    Require();
    text_.append("\r\n");
    column_ = 1;
    SpillIfLarge();
    return *this;
}

PrintFile& PrintFile::Line(std::string_view text) { return Item(text).EndLine(); }

void PrintFile::Close() {
    if (fd_ < 0) return;
    if (!WriteAll(fd_, text_.data(), text_.size())) {
        const std::string why = Describe(path_, "cannot be written");
        Discard();
        Fail(kPathAccessError, why);
    }
    if (mode_ == TextMode::Append) {
        const int result = ::close(fd_);
        fd_ = -1;
        if (result != 0) Fail(kPathAccessError, Describe(path_, "cannot be written"));
        return;
    }

    // The replacement keeps the old file's permissions; a new file gets the
    // ones any newly created file would.
    struct stat info {};
    const mode_t mode = ::stat(path_.c_str(), &info) == 0 ? (info.st_mode & 07777) : NewFileMode();
    const bool modeSet = ::fchmod(fd_, mode) == 0;
    const bool closed = ::close(fd_) == 0;
    fd_ = -1;
    const bool written = modeSet && closed;
    if (!written || ::rename(tempPath_.c_str(), path_.c_str()) != 0) {
        const std::string why = Describe(path_, "cannot be written");
        Discard();
        Fail(kPathAccessError, why);
    }
    tempPath_.clear();
}

}  // namespace tremodal
