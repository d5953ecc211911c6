#include "base/binary_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>

#include "base/file_system.h"

namespace tremodal {

namespace {

// Results files are written a field at a time, a few bytes each, hundreds of
// thousands of times: the fields gather in one run of this size before they
// go to the kernel.
constexpr std::size_t kWriteRun = 4 * 1024 * 1024;
// A block this large goes to the kernel as it stands, with no copy into the
// run: the response blocks of a large model are megabytes each.
constexpr std::size_t kDirectWrite = 64 * 1024;
// Reads of small fields are served from one read-ahead block of this size.
constexpr std::size_t kReadAhead = 256 * 1024;

// A position before the first byte or record.
constexpr int kBadRecordNumber = 63;

// "<path>: cannot be read (Input/output error)".
std::string Describe(const std::string& path, const char* what) {
    return path + ": " + what + " (" + std::strerror(errno) + ")";
}

template <class Unsigned>
void PutLittle(std::vector<unsigned char>& out, Unsigned bits) {
    unsigned char bytes[sizeof(Unsigned)];
    StoreLittle(bytes, bits);
    out.insert(out.end(), bytes, bytes + sizeof bytes);
}

// Reads up to n bytes at an offset, stopping only at the end of the file.
// Returns how many bytes the file held there; -1 on an error.
std::int64_t ReadAt(int fd, unsigned char* to, std::size_t n, std::int64_t at) {
    std::size_t done = 0;
    while (done < n) {
        const ssize_t got =
            ::pread(fd, to + done, n - done, static_cast<off_t>(at + static_cast<std::int64_t>(done)));
        if (got < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return static_cast<std::int64_t>(done);
}

bool WriteAt(int fd, const unsigned char* from, std::size_t n, std::int64_t at) {
    std::size_t done = 0;
    while (done < n) {
        const ssize_t put =
            ::pwrite(fd, from + done, n - done, static_cast<off_t>(at + static_cast<std::int64_t>(done)));
        if (put < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        done += static_cast<std::size_t>(put);
    }
    return true;
}

}  // namespace

BinaryFile::BinaryFile(const std::string& path) : path_(path) {
    fd_ = OpenRegularFile(path, O_RDWR | O_CREAT, 0666);
    // A file that may only be read still serves the readers; writing to it
    // fails when the bytes reach it.
    if (fd_ < 0 && (errno == EACCES || errno == EROFS)) fd_ = OpenRegularFile(path, O_RDONLY);
    if (fd_ < 0) Fail(kPathAccessError, Describe(path, "cannot be opened"));
}

BinaryFile::~BinaryFile() {
    if (fd_ < 0) return;
    try {
        Flush();
    } catch (const Failure&) {
        // A destructor runs while another failure passes by: that one counts.
    }
    ::close(fd_);
}

void BinaryFile::Close() {
    if (fd_ < 0) return;
    bool written = true;
    try {
        Flush();
    } catch (const Failure&) {
        written = false;
    }
    if (::close(fd_) != 0) written = false;  // Don't retry close on EINTR.
    fd_ = -1;
    pending_.clear();
    aheadLen_ = 0;
    if (!written) Fail(kPathAccessError, path_ + ": cannot be written");
}

void BinaryFile::Require() const {
    if (fd_ < 0) Fail(kBadFileMode, "binary access to a file that is not open: " + path_);
}

void BinaryFile::Flush() {
    if (pending_.empty()) return;
    const bool written = WriteAt(fd_, pending_.data(), pending_.size(), pendingStart_);
    const std::string why = written ? std::string() : Describe(path_, "cannot be written");
    // A run that failed is dropped, so the destructor does not try it again.
    pending_.clear();
    if (!written) Fail(kPathAccessError, why);
}

void BinaryFile::Seek(std::int64_t position) {
    Require();
    if (position < 1) Fail(kBadRecordNumber, "position before the start of " + path_);
    offset_ = position - 1;
}

void BinaryFile::SeekRecord(std::int64_t record, std::int64_t length) {
    Require();
    if (record < 1 || length < 1) Fail(kBadRecordNumber, "bad record number in " + path_);
    offset_ = (record - 1) * length;
}

std::int64_t BinaryFile::Size() {
    Require();
    struct stat info {};
    if (::fstat(fd_, &info) != 0) Fail(kPathAccessError, Describe(path_, "cannot be read"));
    const std::int64_t onDisk = info.st_size;
    if (pending_.empty()) return onDisk;
    return std::max(onDisk, pendingStart_ + static_cast<std::int64_t>(pending_.size()));
}

std::size_t BinaryFile::Read(void* destination, std::size_t n) {
    Require();
    Flush();
    auto* to = static_cast<unsigned char*>(destination);
    std::size_t done = 0;
    std::size_t real = 0;
    while (done < n) {
        const std::int64_t at = offset_ + static_cast<std::int64_t>(done);
        const std::size_t left = n - done;
        if (aheadLen_ > 0 && at >= aheadStart_ && at < aheadStart_ + static_cast<std::int64_t>(aheadLen_)) {
            const auto from = static_cast<std::size_t>(at - aheadStart_);
            const std::size_t take = std::min(left, aheadLen_ - from);
            std::memcpy(to + done, ahead_.data() + from, take);
            done += take;
            real += take;
            continue;
        }
        // A large block goes straight into its destination; a small field
        // fills the read-ahead block first.
        if (left >= kReadAhead) {
            const std::int64_t got = ReadAt(fd_, to + done, left, at);
            if (got < 0) Fail(kPathAccessError, Describe(path_, "cannot be read"));
            done += static_cast<std::size_t>(got);
            real += static_cast<std::size_t>(got);
            break;
        }
        ahead_.resize(kReadAhead);
        const std::int64_t got = ReadAt(fd_, ahead_.data(), kReadAhead, at);
        if (got < 0) {
            aheadLen_ = 0;
            Fail(kPathAccessError, Describe(path_, "cannot be read"));
        }
        aheadStart_ = at;
        aheadLen_ = static_cast<std::size_t>(got);
        if (aheadLen_ == 0) break;  // the end of the file
    }
    // Beyond the end of the file everything reads as zero.
    if (done < n) std::memset(to + done, 0, n - done);
    offset_ += static_cast<std::int64_t>(n);
    return real;
}

std::size_t BinaryFile::ReadBlockAt(void* destination, std::size_t n, std::int64_t position) const {
    Require();
    if (position < 1) Fail(kBadRecordNumber, "position before the start of " + path_);
    const std::int64_t got = ReadAt(fd_, static_cast<unsigned char*>(destination), n, position - 1);
    if (got < 0) Fail(kPathAccessError, Describe(path_, "cannot be read"));
    return static_cast<std::size_t>(got);
}

void BinaryFile::UpdateAhead(std::int64_t at, const unsigned char* bytes, std::size_t n) {
    if (aheadLen_ == 0) return;
    const std::int64_t aheadEnd = aheadStart_ + static_cast<std::int64_t>(aheadLen_);
    const std::int64_t from = std::max(at, aheadStart_);
    const std::int64_t to = std::min(at + static_cast<std::int64_t>(n), aheadEnd);
    if (from >= to) return;
    std::memcpy(ahead_.data() + (from - aheadStart_), bytes + (from - at),
                static_cast<std::size_t>(to - from));
}

void BinaryFile::Write(const void* source, std::size_t n) {
    Require();
    if (n == 0) return;
    const auto* from = static_cast<const unsigned char*>(source);
    UpdateAhead(offset_, from, n);

    const std::int64_t runEnd = pendingStart_ + static_cast<std::int64_t>(pending_.size());
    const bool joinsRun = n < kDirectWrite && !pending_.empty() && offset_ >= pendingStart_ &&
                          offset_ <= runEnd &&
                          static_cast<std::size_t>(offset_ - pendingStart_) + n <= kWriteRun;
    if (joinsRun) {
        const auto at = static_cast<std::size_t>(offset_ - pendingStart_);
        if (at + n > pending_.size()) pending_.resize(at + n);
        std::memcpy(pending_.data() + at, from, n);
    } else {
        Flush();
        if (n >= kDirectWrite) {
            if (!WriteAt(fd_, from, n, offset_)) Fail(kPathAccessError, Describe(path_, "cannot be written"));
        } else {
            pendingStart_ = offset_;
            pending_.assign(from, from + n);
        }
    }
    offset_ += static_cast<std::int64_t>(n);
}

i16 BinaryFile::ReadI16() {
    unsigned char b[2];
    Read(b, sizeof b);
    return GetI16(b);
}

i32 BinaryFile::ReadI32() {
    unsigned char b[4];
    Read(b, sizeof b);
    return GetI32(b);
}

f32 BinaryFile::ReadF32() {
    unsigned char b[4];
    Read(b, sizeof b);
    return GetF32(b);
}

f64 BinaryFile::ReadF64() {
    unsigned char b[8];
    Read(b, sizeof b);
    return GetF64(b);
}

std::uint8_t BinaryFile::ReadU8() {
    unsigned char b = 0;
    Read(&b, 1);
    return b;
}

void BinaryFile::WriteI16(i16 value) {
    unsigned char b[sizeof value];
    StoreLittle(b, std::bit_cast<std::uint16_t>(value));
    Write(b, sizeof b);
}

void BinaryFile::WriteI32(i32 value) {
    unsigned char b[sizeof value];
    StoreLittle(b, std::bit_cast<std::uint32_t>(value));
    Write(b, sizeof b);
}

void BinaryFile::WriteF32(f32 value) {
    unsigned char b[sizeof value];
    StoreLittle(b, std::bit_cast<std::uint32_t>(value));
    Write(b, sizeof b);
}

void BinaryFile::WriteF64(f64 value) {
    unsigned char b[sizeof value];
    StoreLittle(b, std::bit_cast<std::uint64_t>(value));
    Write(b, sizeof b);
}

void BinaryFile::WriteFixedText(std::string_view text, std::size_t length) {
    const std::size_t kept = std::min(text.size(), length);
    Write(text.data(), kept);
    const std::string blanks(length - kept, ' ');
    Write(blanks.data(), blanks.size());
}

// ---------------------------------------------------------------------------
// Little-endian fields, built byte by byte so that the files come out the
// same whatever the byte order of the machine.

void PutI16(std::vector<unsigned char>& out, i16 value) {
    PutLittle(out, std::bit_cast<std::uint16_t>(value));
}
void PutI32(std::vector<unsigned char>& out, i32 value) {
    PutLittle(out, std::bit_cast<std::uint32_t>(value));
}
void PutF32(std::vector<unsigned char>& out, f32 value) {
    PutLittle(out, std::bit_cast<std::uint32_t>(value));
}
void PutF64(std::vector<unsigned char>& out, f64 value) {
    PutLittle(out, std::bit_cast<std::uint64_t>(value));
}

void PutFixedText(std::vector<unsigned char>& out, std::string_view text, std::size_t length) {
    const std::size_t kept = std::min(text.size(), length);
    out.insert(out.end(), text.begin(), text.begin() + static_cast<std::ptrdiff_t>(kept));
    out.insert(out.end(), length - kept, static_cast<unsigned char>(' '));
}

}  // namespace tremodal
