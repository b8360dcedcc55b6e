#include "quor/ring/segment_map.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace {

constexpr std::uint64_t kPage = 4096;

constexpr std::uint64_t RoundUp(std::uint64_t bytes) {
  return (bytes + kPage - 1) / kPage * kPage;
}

SegmentLayout LayoutFor(const SegmentSizes& sizes) {
  SegmentLayout layout;
  layout.pointCapacity = sizes.points;
  layout.nameBytes = sizes.nameBytes;
  layout.ringBytes = sizes.ringBytes;
  const std::uint64_t points = RoundUp(sizeof(SegmentHeader));
  const std::uint64_t names = RoundUp(points + std::uint64_t{sizes.points} * sizeof(SegmentPoint));
  const std::uint64_t ring = RoundUp(names + sizes.nameBytes);
  layout.pointsOffset = static_cast<std::uint32_t>(points);
  layout.namesOffset = static_cast<std::uint32_t>(names);
  layout.ringOffset = static_cast<std::uint32_t>(ring);
  return layout;
}

bool SizesAreSane(const SegmentLayout& layout) {
  return layout.ringBytes >= SegmentMap::kRingBytesMin &&
         layout.ringBytes <= SegmentMap::kRingBytesMax &&
         (layout.ringBytes & (layout.ringBytes - 1)) == 0 && layout.pointCapacity >= 1 &&
         layout.pointCapacity <= SegmentMap::kPointsMax && layout.nameBytes >= 1024 &&
         layout.nameBytes <= SegmentMap::kNameBytesMax;
}

// The offsets must be exactly those of this version of the layout.
const char* WhyNot(const SegmentLayout& layout, std::uint64_t bytes) {
  if (!SizesAreSane(layout)) return "a size in the segment is out of range";
  const SegmentLayout expected =
      LayoutFor({layout.pointCapacity, layout.nameBytes, layout.ringBytes});
  if (layout.pointsOffset != expected.pointsOffset || layout.namesOffset != expected.namesOffset ||
      layout.ringOffset != expected.ringOffset)
    return "an offset in the segment is wrong";
  if (bytes < std::uint64_t{layout.ringOffset} + layout.ringBytes)
    return "the segment is shorter than its header says";
  if (layout.salt >> 63 == 0) return "the segment's salt is wrong";
  return nullptr;
}

// Beyond this limit the kernel would send a signal that ends the process.
bool MayGrowTo(std::uint64_t bytes) {
  rlimit limit{};
  return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur >= bytes;
}

// volatile: the other process may change the bytes under us, and each must be read once.
template <class T>
T ReadOnce(const T& from) {
  return *static_cast<const volatile T*>(&from);
}

struct alignas(SegmentHeader) HeaderBytes {
  unsigned char bytes[sizeof(SegmentHeader)] = {};
};

// Null: the file has no valid header.
const SegmentHeader* HeaderIn(int file, HeaderBytes& to) {
  if (pread(file, to.bytes, sizeof to.bytes, 0) != sizeof to.bytes) return nullptr;
  return reinterpret_cast<const SegmentHeader*>(to.bytes);
}

bool HasMark(const SegmentHeader& header) {
  return std::memcmp(header.magic, kSegmentMagic, sizeof kSegmentMagic) == 0;
}

}  // namespace

bool ReadFinishedSegment(int file, FinishedSegment* rest) {
  HeaderBytes bytes;
  const SegmentHeader* const header = HeaderIn(file, bytes);
  if (!header || !HasMark(*header) || header->version != kSegmentVersion ||
      header->finished == SegmentEnd::None)
    return false;
  *rest = {header->pid,
           header->moves,
           header->startedNs,
           header->served,
           header->servedElsewhere,
           header->finished,
           std::string(header->forwardTarget, strnlen(header->forwardTarget, kForwardTargetBytes)),
           header->forwarded};
  return true;
}

bool IsUnowned(int file) {
  if (file < 0 || flock(file, LOCK_SH | LOCK_NB) != 0) return false;
  flock(file, LOCK_UN);
  return true;
}

SegmentMap::~SegmentMap() {
  Close();
}

SegmentMap::SegmentMap(SegmentMap&& other) noexcept {
  *this = std::move(other);
}

SegmentMap& SegmentMap::operator=(SegmentMap&& other) noexcept {
  if (this == &other) return *this;
  Close();
  m_descriptor = std::move(other.m_descriptor);
  m_bytes = std::exchange(other.m_bytes, 0);
  m_header = std::exchange(other.m_header, nullptr);
  m_layout = other.m_layout;
  return *this;
}

bool SegmentMap::Create(const SegmentSizes& sizes, std::uint64_t startedNs, std::uint64_t salt,
                        int file) {
  Close();
  SegmentLayout layout = LayoutFor(sizes);
  const std::uint64_t bytes = std::uint64_t{layout.ringOffset} + layout.ringBytes;
  int descriptor = file;
  if (descriptor < 0 && SizesAreSane(layout)) descriptor = memfd_create("quor", MFD_CLOEXEC);
  if (descriptor < 0) return false;
  m_descriptor = CheckedDescriptor(descriptor);
  const int number = m_descriptor.Get();
  // The mapping keeps the lock after the descriptor is closed.
  if (!SizesAreSane(layout) || number < 0 || !MayGrowTo(bytes) ||
      flock(number, LOCK_EX | LOCK_NB) != 0 || ftruncate(number, static_cast<off_t>(bytes)) != 0 ||
      !Map(number, bytes) || !BeginBacking(m_header, number, bytes)) {
    Close();
    return false;
  }
  layout.pid = static_cast<std::uint32_t>(getpid());
  layout.startedNs = startedNs;
  layout.salt = salt | (std::uint64_t{1} << 63);
  FillHeader(layout);
  if (PointsMemory().Reach(1) && NamesMemory().Reach(1) && RingMemory().Reach(1)) return true;
  Close();
  return false;
}

void SegmentMap::FillHeader(const SegmentLayout& layout) {
  m_layout = layout;
  m_header->version = kSegmentVersion;
  m_header->pointCapacity = layout.pointCapacity;
  m_header->nameBytes = layout.nameBytes;
  m_header->ringBytes = layout.ringBytes;
  m_header->pointsOffset = layout.pointsOffset;
  m_header->namesOffset = layout.namesOffset;
  m_header->ringOffset = layout.ringOffset;
  m_header->pid = layout.pid;
  m_header->startedNs = layout.startedNs;
  m_header->salt = layout.salt;
  std::memcpy(m_header->magic, kSegmentMagic, sizeof kSegmentMagic);
}

bool SegmentMap::Open(int descriptor, const char** why) {
  Close();
  errno = 0;
  const char* const reason = WhyNotOpen(descriptor);
  if (!reason) return true;
  const int error = errno;
  if (why) *why = reason;
  Close();
  errno = error;
  return false;
}

const char* SegmentMap::WhyNotOpen(int descriptor) {
  if (descriptor < 0) return "the segment has no descriptor";
  // Opened by name again: the passed file is the owner's own open file, and holding it would hold
  // the owner's lock.
  char path[40];
  std::snprintf(path, sizeof path, "/proc/self/fd/%d", descriptor);
  struct stat status {};
  struct statfs system {};
  const bool isFile = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
  // Reading from any other file system could block.
  const bool inMemory = isFile && fstatfs(descriptor, &system) == 0 && system.f_type == TMPFS_MAGIC;
  // Without waiting: its owner may hold a lease on it.
  m_descriptor = CheckedDescriptor(inMemory ? open(path, O_RDWR | O_NONBLOCK | O_CLOEXEC) : -1);
  close(descriptor);
  const auto bytes = static_cast<std::uint64_t>(status.st_size);
  if (!inMemory) return "the segment does not lie in memory";
  if (m_descriptor.Get() < 0) return "the segment cannot be opened";
  if (bytes < RoundUp(sizeof(SegmentHeader)) || bytes > std::uint64_t{4} << 30)
    return "the segment has a wrong size";
  if (bytes % kPage != 0 || !Map(m_descriptor.Get(), bytes)) return "the segment cannot be mapped";
  return ReadHeader(m_descriptor.Get());
}

const char* SegmentMap::ReadHeader(int descriptor) {
  HeaderBytes bytes;
  const SegmentHeader* const read = HeaderIn(descriptor, bytes);
  if (!read) return "the segment has a wrong size";
  const SegmentHeader& header = *read;
  if (!HasMark(header)) return "the segment has a wrong mark";
  if (header.version != kSegmentVersion) return "the segment has an unknown version";
  m_layout.pointCapacity = header.pointCapacity;
  m_layout.nameBytes = header.nameBytes;
  m_layout.ringBytes = header.ringBytes;
  m_layout.pointsOffset = header.pointsOffset;
  m_layout.namesOffset = header.namesOffset;
  m_layout.ringOffset = header.ringOffset;
  m_layout.pid = header.pid;
  m_layout.startedNs = header.startedNs;
  m_layout.salt = header.salt;
  m_layout.appName = header.appName;
  m_layout.pidName = header.pidName;
  m_layout.machineName = header.machineName;
  m_layout.startNotes = header.startNotes;
  return WhyNot(m_layout, m_bytes);
}

void SegmentMap::RefreshNames() {
  m_layout.appName = ReadOnce(m_header->appName);
  m_layout.pidName = ReadOnce(m_header->pidName);
  m_layout.machineName = ReadOnce(m_header->machineName);
  m_layout.startNotes = ReadOnce(m_header->startNotes);
}

bool SegmentMap::OwnerIsGone() const {
  return IsUnowned(m_descriptor.Get());
}

void SegmentMap::Detach(std::size_t points, std::size_t nameBytes) {
  m_descriptor.Close();
  if (!m_header) return;
  void* const copy = mmap(nullptr, m_bytes, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  // Without memory for a copy the shared memory stays mapped: there is no alternative.
  if (copy == MAP_FAILED) return;
  auto* const to = static_cast<std::uint8_t*>(copy);
  std::memcpy(to, Base(), m_layout.pointsOffset + points * sizeof(SegmentPoint));
  std::memcpy(to + m_layout.namesOffset, Names(), nameBytes);
  if (mremap(copy, m_bytes, m_bytes, MREMAP_MAYMOVE | MREMAP_FIXED, m_header) == MAP_FAILED)
    munmap(copy, m_bytes);
}

void SegmentMap::Finish(SegmentEnd end) {
  m_header->finished.store(end, std::memory_order_release);
  const int number = m_descriptor.Get();
  // If this fails the file stays larger than necessary for a while.
  if (number >= 0 && ftruncate(number, RoundUp(sizeof(SegmentHeader))) != 0) return;
}

void SegmentMap::Abandon() {
  m_descriptor.Close();
  m_header = nullptr;
}

SegmentPoint* SegmentMap::Points() const {
  return reinterpret_cast<SegmentPoint*>(Base() + m_layout.pointsOffset);
}

std::uint8_t* SegmentMap::Names() const {
  return Base() + m_layout.namesOffset;
}

std::uint8_t* SegmentMap::Ring() const {
  return Base() + m_layout.ringOffset;
}

BackedMemory SegmentMap::PointsMemory() const {
  return {Points(), m_layout.pointCapacity * sizeof(SegmentPoint)};
}

BackedMemory SegmentMap::NamesMemory() const {
  return {Names(), m_layout.nameBytes};
}

BackedMemory SegmentMap::RingMemory() const {
  return {Ring(), m_layout.ringBytes};
}

bool SegmentMap::Map(int descriptor, std::uint64_t bytes) {
  void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  if (memory == MAP_FAILED) return false;
  m_bytes = bytes;
  m_header = static_cast<SegmentHeader*>(memory);
  return true;
}

void SegmentMap::Close() {
  if (m_header) munmap(m_header, m_bytes);
  m_descriptor.Close();
  m_header = nullptr;
  m_layout = {};
}

std::uint8_t* SegmentMap::Base() const {
  return reinterpret_cast<std::uint8_t*>(m_header);
}
