#include "quor/ring/segment_map.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

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

// The offsets must be those that this version of the layout gives: no other can be meant.
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

// volatile: the other process may change the bytes under us, and each must be read once.
template <class T>
T ReadOnce(const T& from) {
  return *static_cast<const volatile T*>(&from);
}

}  // namespace

SegmentMap::~SegmentMap() {
  Close();
}

SegmentMap::SegmentMap(SegmentMap&& other) noexcept {
  *this = std::move(other);
}

SegmentMap& SegmentMap::operator=(SegmentMap&& other) noexcept {
  if (this == &other) return *this;
  Close();
  m_descriptor = std::exchange(other.m_descriptor, -1);
  m_bytes = std::exchange(other.m_bytes, 0);
  m_header = std::exchange(other.m_header, nullptr);
  m_layout = other.m_layout;
  return *this;
}

bool SegmentMap::Create(const SegmentSizes& sizes, std::uint64_t startedNs, std::uint64_t salt) {
  Close();
  SegmentLayout layout = LayoutFor(sizes);
  if (!SizesAreSane(layout)) return false;
  const std::uint64_t bytes = std::uint64_t{layout.ringOffset} + layout.ringBytes;
  const int descriptor = memfd_create("quor", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  if (descriptor < 0) return false;
  if (ftruncate(descriptor, static_cast<off_t>(bytes)) != 0 ||
      fcntl(descriptor, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0 ||
      !Map(descriptor, bytes)) {
    close(descriptor);
    return false;
  }
  layout.pid = static_cast<std::uint32_t>(getpid());
  layout.startedNs = startedNs;
  layout.salt = salt | (std::uint64_t{1} << 63);
  m_layout = layout;
  m_header->version = kSegmentVersion;
  m_header->pointCapacity = layout.pointCapacity;
  m_header->nameBytes = layout.nameBytes;
  m_header->ringBytes = layout.ringBytes;
  m_header->pointsOffset = layout.pointsOffset;
  m_header->namesOffset = layout.namesOffset;
  m_header->ringOffset = layout.ringOffset;
  m_header->pid = layout.pid;
  m_header->startedNs = startedNs;
  m_header->salt = layout.salt;
  std::memcpy(m_header->magic, kSegmentMagic, sizeof kSegmentMagic);
  return true;
}

bool SegmentMap::Open(int descriptor, const char** why) {
  Close();
  struct stat status {};
  const int seals = fcntl(descriptor, F_GET_SEALS);
  const char* reason = nullptr;
  if (fstat(descriptor, &status) != 0) {
    reason = "the segment has no descriptor";
  } else if (seals < 0 || (seals & F_SEAL_SHRINK) == 0 || (seals & F_SEAL_GROW) == 0) {
    // Without the seal the application could cut the memory off while it is read.
    reason = "the segment is not sealed";
  } else if (static_cast<std::uint64_t>(status.st_size) < RoundUp(sizeof(SegmentHeader)) ||
             static_cast<std::uint64_t>(status.st_size) > std::uint64_t{4} << 30) {
    reason = "the segment has a wrong size";
  } else if (!Map(descriptor, static_cast<std::uint64_t>(status.st_size))) {
    reason = "the segment cannot be mapped";
  }
  if (!reason) {
    char magic[sizeof kSegmentMagic];
    std::memcpy(magic, m_header->magic, sizeof magic);
    if (std::memcmp(magic, kSegmentMagic, sizeof magic) != 0) {
      reason = "the segment has a wrong mark";
    } else if (ReadOnce(m_header->version) != kSegmentVersion) {
      reason = "the segment has an unknown version";
    } else {
      m_layout.pointCapacity = ReadOnce(m_header->pointCapacity);
      m_layout.nameBytes = ReadOnce(m_header->nameBytes);
      m_layout.ringBytes = ReadOnce(m_header->ringBytes);
      m_layout.pointsOffset = ReadOnce(m_header->pointsOffset);
      m_layout.namesOffset = ReadOnce(m_header->namesOffset);
      m_layout.ringOffset = ReadOnce(m_header->ringOffset);
      m_layout.pid = ReadOnce(m_header->pid);
      m_layout.startedNs = ReadOnce(m_header->startedNs);
      m_layout.salt = ReadOnce(m_header->salt);
      RefreshNames();
      reason = WhyNot(m_layout, m_bytes);
    }
  }
  if (!reason) return true;
  if (why) *why = reason;
  if (!m_header && descriptor >= 0) close(descriptor);
  Close();
  return false;
}

void SegmentMap::RefreshNames() {
  m_layout.appName = ReadOnce(m_header->appName);
  m_layout.pidName = ReadOnce(m_header->pidName);
  m_layout.machineName = ReadOnce(m_header->machineName);
}

void SegmentMap::Abandon() {
  if (m_descriptor >= 0) close(m_descriptor);
  m_descriptor = -1;
  if (m_header)  // without memory for it the shared one stays: there is nothing better
    (void)mmap(m_header, m_bytes, PROT_READ | PROT_WRITE,
               MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED | MAP_NORESERVE, -1, 0);
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

bool SegmentMap::Map(int descriptor, std::uint64_t bytes) {
  void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  if (memory == MAP_FAILED) return false;
  m_descriptor = descriptor;
  m_bytes = bytes;
  m_header = static_cast<SegmentHeader*>(memory);
  return true;
}

void SegmentMap::Close() {
  if (m_header) munmap(m_header, m_bytes);
  if (m_descriptor >= 0) close(m_descriptor);
  m_header = nullptr;
  m_descriptor = -1;
  m_layout = {};
}

std::uint8_t* SegmentMap::Base() const {
  return reinterpret_cast<std::uint8_t*>(m_header);
}
