#include "symbols/elf_build_id.h"

#include <elf.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <iterator>

namespace {

std::string IdOf(const std::string& file) {
  return ElfBuildId([&](std::uint64_t offset, void* to, std::size_t size) {
    if (offset > file.size() || size > file.size() - offset) return false;
    std::memcpy(to, file.data() + offset, size);
    return true;
  });
}

// A file of one note segment, of the given word size and byte order.
class NoteFile {
 public:
  NoteFile(bool wide, bool big) : m_wide(wide), m_big(big) {
    m_bytes = std::string(
                  "\x7F"
                  "ELF",
                  4) +
              (wide ? '\2' : '\1') + (big ? '\2' : '\1') + '\1';
    m_bytes.resize(wide ? 64 : 52);
    Put(wide ? 32 : 28, m_bytes.size(), wide ? 8 : 4);  // where the segments are
    Put(wide ? 56 : 44, 1, 2);
    const std::size_t segment = m_bytes.size();
    m_bytes.resize(segment + (wide ? 56 : 32));
    Put(segment, PT_NOTE, 4);
    Put(segment + (wide ? 8 : 4), m_bytes.size(), wide ? 8 : 4);
    m_sizeAt = segment + (wide ? 32 : 16);
  }
  NoteFile& Note(unsigned type, std::string name, std::string description) {
    const std::size_t at = m_bytes.size();
    m_bytes.resize(at + 12);
    Put(at, name.size(), 4);
    Put(at + 4, description.size(), 4);
    Put(at + 8, type, 4);
    for (std::string* const part : {&name, &description}) {
      part->resize((part->size() + 3) / 4 * 4);
      m_bytes += *part;
    }
    m_notes += m_bytes.size() - at;
    Put(m_sizeAt, m_notes, m_wide ? 8 : 4);
    return *this;
  }
  NoteFile& Put(std::size_t at, std::uint64_t number, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
      m_bytes[at + (m_big ? size - 1 - i : i)] = static_cast<char>(number >> 8 * i);
    return *this;
  }
  const std::string& Bytes() const { return m_bytes; }

 private:
  bool m_wide, m_big;
  std::string m_bytes;
  std::size_t m_sizeAt = 0, m_notes = 0;
};

const std::string kOwner("GNU", 4);

TEST(ElfBuildId, IsReadFromFilesOfBothWordSizesAndByteOrders) {
  for (const bool wide : {false, true})
    for (const bool big : {false, true})
      EXPECT_EQ(IdOf(NoteFile(wide, big)
                         .Note(1, kOwner, "12345")
                         .Note(3, "Go", "no")
                         .Note(3, kOwner, "\x01\xAB\xCD\xEF\x05")
                         .Bytes()),
                "01abcdef05")
          << wide << big;
}

TEST(ElfBuildId, IsThatOfARealProgram) {
  const int file = open("/proc/self/exe", O_RDONLY | O_CLOEXEC);
  const std::string id = ElfBuildId(file);
  close(file);
  EXPECT_EQ(id.size(), 40u);
  std::string note = kOwner;
  for (std::size_t i = 0; i + 1 < id.size(); i += 2)
    note.push_back(static_cast<char>(std::stoi(id.substr(i, 2), nullptr, 16)));
  std::ifstream in("/proc/self/exe", std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(in), {}};
  EXPECT_NE(bytes.find(note), bytes.npos);
}

TEST(ElfBuildId, ADamagedFileHasNone) {
  const std::string whole = NoteFile(true, false).Note(3, kOwner, "12345678").Bytes();
  ASSERT_EQ(IdOf(whole), "3132333435363738");
  for (std::size_t size = 0; size < whole.size(); ++size)
    EXPECT_EQ(IdOf(whole.substr(0, size)), "");
  EXPECT_EQ(IdOf("#!/bin/sh\n" + std::string(100, ' ')), "");
  const auto with = [](std::size_t at, std::uint64_t number, std::size_t size) {
    return IdOf(NoteFile(true, false).Note(3, kOwner, "12345678").Put(at, number, size).Bytes());
  };
  const std::size_t segment = 64, note = 64 + 56;
  EXPECT_EQ(with(32, UINT64_MAX - 8, 8), "") << "segments behind the end";
  EXPECT_EQ(with(segment + 8, UINT64_MAX, 8), "") << "notes behind the end";
  EXPECT_EQ(with(segment + 32, UINT64_MAX, 8), "") << "notes of any size";
  EXPECT_EQ(with(note, UINT32_MAX, 4), "") << "an owner that is longer than the notes";
  EXPECT_EQ(with(note + 4, UINT32_MAX, 4), "") << "an id that is longer than the notes";
  EXPECT_EQ(IdOf(NoteFile(true, false).Note(3, kOwner, std::string(65, 'x')).Bytes()), "")
      << "longer than any id";
}

}  // namespace
