// The build id of an ELF file, read from its notes without any other part of it.
//
// Shape    Lower-case hexadecimal digits. Files of both word sizes and byte orders.
// Errors   Empty if there is none, or if the file is damaged or no ELF file.
// Threads  Pure but for `read`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

// Reads `size` bytes at an offset of the file. False: they are not all there.
using ReadElfBytes = std::function<bool(std::uint64_t offset, void* to, std::size_t size)>;

std::string ElfBuildId(const ReadElfBytes& read);
std::string ElfBuildId(int descriptor);
