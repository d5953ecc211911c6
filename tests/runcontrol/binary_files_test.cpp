#include "runcontrol/binary_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FailureOf;

using testing::BytesF32;
using testing::BytesF64;
using testing::BytesI16;
using testing::BytesI32;
using testing::Exists;
using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;

std::string Text(const std::vector<unsigned char>& bytes) { return std::string(bytes.begin(), bytes.end()); }

TEST(LittleEndianFields, PutAndGetGiveExactBytes) {
    std::vector<unsigned char> out;
    PutI16(out, 0x1234);
    PutI16(out, -2);
    PutI32(out, 0x01020304);
    PutF32(out, 1.0f);
    PutF64(out, -2.0);
    PutFixedText(out, "AB", 4);
    PutFixedText(out, "TOOLONG", 3);
    EXPECT_EQ(Text(out), std::string("\x34\x12\xfe\xff\x04\x03\x02\x01\x00\x00\x80\x3f", 12) +
                             std::string("\0\0\0\0\0\0\0\xc0", 8) + "AB  TOO");
    EXPECT_EQ(GetI16(out.data()), 0x1234);
    EXPECT_EQ(GetI16(out.data() + 2), -2);
    EXPECT_EQ(GetI32(out.data() + 4), 0x01020304);
    EXPECT_EQ(GetF32(out.data() + 8), 1.0f);
    EXPECT_EQ(GetF64(out.data() + 12), -2.0);
}

TEST(BinaryFile, FieldsAndRecordsGoAtOneBasedPositions) {
    TempDir dir;
    const std::string path = dir.File("b.bin");
    BinaryFile file(path);
    EXPECT_EQ(file.Position(), 1);
    file.WriteI16(-2);
    file.WriteI32(100000);
    file.WriteF32(0.5f);
    file.WriteF64(1.0 / 3.0);
    file.WriteFixedText("Case", 6);
    EXPECT_EQ(file.Position(), 25);
    file.Seek(3);
    EXPECT_EQ(file.ReadI32(), 100000);
    file.Seek(7);
    EXPECT_EQ(file.ReadF32(), 0.5f);
    EXPECT_EQ(file.ReadF64(), 1.0 / 3.0);
    EXPECT_EQ(file.ReadU8(), 'C');
    file.SeekRecord(5, 6);  // record 5 of 6 bytes starts at offset 24
    EXPECT_EQ(file.Position(), 25);
    file.WriteI16(5);
    file.SeekRecord(2, 6);
    EXPECT_EQ(file.ReadF32(), 0.5f);
    EXPECT_EQ(FailureOf([&] { file.SeekRecord(0, 6); }), 63);
    EXPECT_EQ(FailureOf([&] { file.Seek(0); }), 63);
    file.Close();
    EXPECT_EQ(ReadFile(path), BytesI16(-2) + BytesI32(100000) + BytesF32(0.5f) + BytesF64(1.0 / 3.0) +
                                  "Case  " + BytesI16(5));
}

TEST(BinaryFile, OpenCreatesAMissingFileAndKeepsAnExistingTail) {
    TempDir dir;
    {
        BinaryFile created(dir.File("new.bin"));
        EXPECT_EQ(created.Size(), 0);
    }
    EXPECT_TRUE(Exists(dir.File("new.bin")));

    WriteFile(dir.File("old.bin"), "0123456789");
    BinaryFile file(dir.File("old.bin"));
    file.Seek(3);
    file.WriteFixedText("ab", 2);
    file.Seek(13);  // beyond the end: the gap reads as zeros
    file.WriteFixedText("z", 1);
    EXPECT_EQ(file.Size(), 13);
    file.Close();
    EXPECT_EQ(ReadFile(dir.File("old.bin")), std::string("01ab456789\0\0z", 13));
}

TEST(BinaryFile, ReadPastTheEndGivesZerosAndNoFailure) {
    TempDir dir;
    WriteFile(dir.File("b.bin"), "abc");
    BinaryFile file(dir.File("b.bin"));
    file.Seek(2);
    char got[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
    EXPECT_EQ(file.Read(got, 5), 2u);
    EXPECT_EQ(std::string(got, 6), std::string("bc\0\0\0x", 6));
    EXPECT_EQ(file.Position(), 7);
    EXPECT_EQ(file.ReadI32(), 0);
    EXPECT_EQ(file.ReadF64(), 0.0);
    std::vector<unsigned char> block(1 << 20, 0xff);
    file.Seek(1);
    EXPECT_EQ(file.Read(block.data(), block.size()), 3u);
    EXPECT_EQ(block[2], 'c');
    EXPECT_EQ(block[3], 0);
    EXPECT_EQ(block.back(), 0);
    EXPECT_EQ(file.Size(), 3);  // reading does not lengthen the file
}

TEST(BinaryFile, ReadsSeeBufferedWrites) {
    TempDir dir;
    WriteFile(dir.File("b.bin"), std::string(100, 'a'));
    BinaryFile file(dir.File("b.bin"));
    EXPECT_EQ(file.ReadU8(), 'a');  // the read-ahead block now holds the file
    file.Seek(50);
    file.WriteFixedText("XY", 2);
    file.Seek(101);
    file.WriteI32(7);
    EXPECT_EQ(file.Size(), 104);
    file.Seek(49);
    char got[4];
    file.Read(got, 4);
    EXPECT_EQ(std::string(got, 4), "aXYa");
    file.Seek(51);
    file.WriteFixedText("Z", 1);  // over bytes already read ahead
    file.Seek(50);
    file.Read(got, 2);
    EXPECT_EQ(std::string(got, 2), "XZ");
    file.Seek(101);
    EXPECT_EQ(file.ReadI32(), 7);
}

TEST(BinaryFile, ManySmallFieldsAndLargeBlocksRoundTrip) {
    TempDir dir;
    const std::string path = dir.File("big.bin");
    constexpr int kFields = 300000;  // more than one write run and one read-ahead block
    std::vector<unsigned char> block(6 << 20);
    for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<unsigned char>(i * 7 + 1);
    {
        BinaryFile file(path);
        for (int i = 0; i < kFields; ++i) file.WriteF32(static_cast<f32>(i));
        file.Write(block.data(), block.size());
        file.WriteI16(-5);
    }  // the destructor writes what is still buffered
    ASSERT_EQ(ReadFile(path).size(), kFields * 4u + block.size() + 2);

    BinaryFile file(path);
    int wrong = 0;
    for (int i = 0; i < kFields; ++i) wrong += file.ReadF32() != static_cast<f32>(i);
    EXPECT_EQ(wrong, 0);
    std::vector<unsigned char> back(block.size());
    EXPECT_EQ(file.Read(back.data(), back.size()), back.size());
    EXPECT_TRUE(back == block);
    EXPECT_EQ(file.ReadI16(), -5);
}

TEST(BinaryFile, FailsWith75ToOpenOrWriteAnd52AfterClose) {
    TempDir dir;
    EXPECT_EQ(FailureOf([&] { BinaryFile file(dir.Path()); }), 75);
    EXPECT_EQ(FailureOf([&] { BinaryFile file(dir.File("none/b.bin")); }), 75);

    WriteFile(dir.File("ro.bin"), "abcd");
    if (::geteuid() != 0) {  // root writes whatever the permissions say
        ::chmod(dir.File("ro.bin").c_str(), 0444);
        BinaryFile readOnly(dir.File("ro.bin"));
        EXPECT_EQ(readOnly.ReadI32(), GetI32(reinterpret_cast<const unsigned char*>("abcd")));
        readOnly.WriteI16(1);
        EXPECT_EQ(FailureOf([&] { readOnly.Close(); }), 75);
        EXPECT_EQ(ReadFile(dir.File("ro.bin")), "abcd");
    }

    BinaryFile file(dir.File("b.bin"));
    file.Close();
    EXPECT_EQ(FailureOf([&] { file.ReadI16(); }), 52);
    EXPECT_EQ(FailureOf([&] { file.WriteI16(1); }), 52);
    EXPECT_EQ(FailureOf([&] { file.Seek(1); }), 52);
}

}  // namespace
}  // namespace tremodal
