// Binary files of the suite: little-endian fields without gaps, addressed by
// 1-based positions, never truncated on open. Large blocks are read and
// written through one buffer, not field by field through the kernel.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "base/failure.h"

namespace tremodal {

// A file open in binary mode. A missing file is created empty; an existing
// one is read and written in place and keeps whatever lies behind the bytes
// written. A read past the end is no failure: the bytes beyond the end read
// as zero.
class BinaryFile {
public:
    // Fails with 75 when the file cannot be opened or created, or when a
    // directory, a FIFO or a device stands in its place.
    explicit BinaryFile(const std::string& path);
    // Writes out what is still buffered; a file written when a failure passes
    // by stays as far as it got.
    ~BinaryFile();
    BinaryFile(const BinaryFile&) = delete;
    BinaryFile& operator=(const BinaryFile&) = delete;

    // Moves to a 1-based position: Seek(25) makes offset 24 the next byte.
    void Seek(std::int64_t position);
    // The 1-based position of the next byte.
    std::int64_t Position() const { return offset_ + 1; }
    // Length of the file in bytes, including what is still buffered.
    std::int64_t Size();

    // Reads n bytes at the position and advances; bytes beyond the end of the
    // file are zero. Returns how many bytes the file really held.
    std::size_t Read(void* destination, std::size_t n);
    // Reads n bytes at a 1-based position straight from the file, leaving
    // the position and the buffers as they are, so that threads may read
    // different blocks at once; bytes still waiting to be written are not
    // seen. Returns how many bytes the file held there.
    std::size_t ReadBlockAt(void* destination, std::size_t n, std::int64_t position) const;
    i16 ReadI16();
    i32 ReadI32();
    f32 ReadF32();
    f64 ReadF64();
    std::uint8_t ReadU8();

    // Writes n bytes at the position and advances.
    void Write(const void* source, std::size_t n);
    void WriteI16(i16 value);
    void WriteI32(i32 value);
    void WriteF32(f32 value);
    void WriteF64(f64 value);
    // Fixed-length text: padded with blanks on the right, cut if longer.
    void WriteFixedText(std::string_view text, std::size_t length);

    const std::string& Path() const { return path_; }

    // Record files: record r (from 1) of length len starts at (r - 1) * len.
    void SeekRecord(std::int64_t record, std::int64_t length);

    void Close();

private:
    void Flush();
    void Require() const;
    // Keeps the read-ahead copy in step with bytes written over it.
    void UpdateAhead(std::int64_t at, const unsigned char* bytes, std::size_t n);

    int fd_ = -1;
    std::string path_;
    std::int64_t offset_ = 0;             // 0-based position of the next byte
    std::vector<unsigned char> pending_;  // bytes written at pendingStart_
    std::int64_t pendingStart_ = 0;
    std::vector<unsigned char> ahead_;  // aheadLen_ bytes of the file read at aheadStart_
    std::int64_t aheadStart_ = 0;
    std::size_t aheadLen_ = 0;
};

// Little-endian encoding of fields into and out of memory blocks, for
// writers that build a whole block before one write and readers that take a
// whole block in one read.
void PutI16(std::vector<unsigned char>& out, i16 value);
void PutI32(std::vector<unsigned char>& out, i32 value);
void PutF32(std::vector<unsigned char>& out, f32 value);
void PutF64(std::vector<unsigned char>& out, f64 value);
void PutFixedText(std::vector<unsigned char>& out, std::string_view text, std::size_t length);

// The block codecs are inline: a large run encodes and decodes every value
// of its mode shapes and responses through them. The bytes are copied whole
// and turned round only on a big-endian machine.
template <class Unsigned>
inline Unsigned ToLittle(Unsigned bits) {
    static_assert(std::is_unsigned_v<Unsigned>);
    if constexpr (std::endian::native == std::endian::big) {
        Unsigned turned = 0;
        for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
            turned = static_cast<Unsigned>((turned << 8) | ((bits >> (8 * i)) & 0xffu));
        }
        return turned;
    }
    return bits;
}

template <class Unsigned>
inline void StoreLittle(unsigned char* to, Unsigned bits) {
    bits = ToLittle(bits);
    std::memcpy(to, &bits, sizeof bits);
}

template <class Unsigned>
inline Unsigned GetLittle(const unsigned char* at) {
    Unsigned bits;
    std::memcpy(&bits, at, sizeof bits);
    return ToLittle(bits);
}

inline i16 GetI16(const unsigned char* at) { return std::bit_cast<i16>(GetLittle<std::uint16_t>(at)); }
inline i32 GetI32(const unsigned char* at) { return std::bit_cast<i32>(GetLittle<std::uint32_t>(at)); }
inline f32 GetF32(const unsigned char* at) { return std::bit_cast<f32>(GetLittle<std::uint32_t>(at)); }
inline f64 GetF64(const unsigned char* at) { return std::bit_cast<f64>(GetLittle<std::uint64_t>(at)); }

}  // namespace tremodal
