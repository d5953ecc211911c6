// Text files as the suite reads and writes them: input fields and line reads
// on one side, print statements with print zones and tabs on the other.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"

namespace tremodal {

// A text file open for input. Lines end at LF, CR LF or CR, so that a file
// edited on either kind of system reads the same. The file is read through a
// buffer; nothing is held beyond it. A failure names the file and, once
// reading has begun, the line: "/jobs/FRAME.XSZ, line 7: ...".
class TextInput {
public:
    // Opens for input: 53 when the file is missing, 75 when it exists but
    // cannot be opened (no permission) or is no regular file (a directory, a
    // FIFO or a device in its place). A field or a line longer than a
    // mebibyte fails with 7.
    explicit TextInput(const std::string& path);
    ~TextInput();
    TextInput(const TextInput&) = delete;
    TextInput& operator=(const TextInput&) = delete;

    // Text field: leading blanks and tabs skipped; a quoted field runs to the
    // next quote and the rest up to the next comma or line end is skipped;
    // otherwise the field runs to the next comma or line end, without its
    // trailing blanks. The comma or line end is consumed. 62 at end of file.
    std::string ReadTextField();

    // Number field: leading blanks, tabs and line ends skipped; the field runs
    // to the next blank, comma or line end; blanks behind it and then one
    // comma or one line end are consumed. The text converts as by Val, so an
    // empty field between two commas is 0. 62 at end of file.
    f64 ReadNumberField();
    // The same, stored into its target: a single (6 on overflow), a 16-bit or
    // a 32-bit integer (rounded half to even, 6 out of range).
    f32 ReadSingleField();
    i16 ReadI16Field();
    i32 ReadI32Field();

    // The text of the last number field and its line, from 1.
    const std::string& LastField() const { return field_; }
    std::int64_t LastFieldLine() const { return fieldLine_; }

    // One whole line as it stands, without its line end. 62 at end of file.
    std::string ReadLine();

    bool AtEnd();
    void Close();

private:
    int Peek();  // next byte, or -1 at end of file
    int Get();   // counts the line ends it passes
    [[noreturn]] void FailAtEnd();
    // A number field that its target cannot hold, with the field's own text.
    [[noreturn]] void FailField(const Failure& failure, const char* reason);
    // The field just read, converted; a conversion that fails names the
    // file, the line and the field, and keeps its number.
    template <class Convert>
    auto Converted(Convert convert, const char* reason) -> decltype(convert()) {
        try {
            return convert();
        } catch (const Failure& failure) {
            FailField(failure, reason);
        }
    }
    void SkipLineEnd();  // consumes LF, CR LF or CR at the cursor
    void Require(const char* what);
    void Take(std::string& text, int c);  // adds c, failing once the text is too long

    void Refill();

    int fd_ = -1;
    std::string path_;
    std::vector<char> buffer_;
    std::size_t pos_ = 0;
    std::size_t len_ = 0;
    std::int64_t line_ = 1;    // the line of the cursor, from 1
    bool afterCr_ = false;     // the last byte taken was a CR: an LF now ends no new line
    bool atLineStart_ = true;  // nothing taken yet on the cursor's line
    std::int64_t fieldLine_ = 1;
    std::string field_;  // the text of the last number field
};

enum class TextMode { Output, Append };

// A text file written with print statements. Output replaces the file,
// Append adds to its end; both create a missing file. What is printed goes to
// disk in large runs, not line by line. An output file is written under a
// temporary name beside the target and renamed over it at Close, so a
// failure never leaves a half-written file; a PrintFile destroyed without
// Close leaves the old file as it was. An appended text is held until Close.
class PrintFile {
public:
    // Fails with 75 when the file cannot be created or opened, or when
    // something other than a regular file stands in its place.
    PrintFile(const std::string& path, TextMode mode);
    ~PrintFile();
    PrintFile(const PrintFile&) = delete;
    PrintFile& operator=(const PrintFile&) = delete;

    // An item followed by a semicolon: the next item follows at once.
    PrintFile& Item(std::string_view text);
    // A comma: the next item starts at the next print zone. Zones begin at
    // columns 1, 15, 29 and so on; the gap is filled with blanks.
    PrintFile& NextZone();
    // Tab(n): moves to column n (the first column is 1); if the line is
    // already beyond column n, to column n of the next line.
    PrintFile& Tab(int column);
    // Ends the current line with CR LF.
    PrintFile& EndLine();
    // A whole statement of one text item: the text, then the line end.
    PrintFile& Line(std::string_view text);

    // The column where the next item starts, from 1.
    int Column() const { return column_; }

    // Writes what was printed and closes. 75 when the write fails.
    void Close();

private:
    void Require() const;
    void Discard();  // closes and removes the temporary file, if any
    void SpillIfLarge();

    std::string path_;
    std::string tempPath_;
    TextMode mode_;
    int fd_ = -1;
    std::string text_;
    int column_ = 1;
};

}  // namespace tremodal
