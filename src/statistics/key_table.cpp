#include "statistics/key_table.h"

#include <cstring>
#include <random>

namespace {

std::uint64_t Mixed(std::uint64_t a, std::uint64_t b) {
  __extension__ typedef unsigned __int128 Wide;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

std::uint64_t Secret() {
  static const std::uint64_t secret = [] {
    std::random_device random;
    return (std::uint64_t{random()} << 32 | random()) | 1;
  }();
  return secret;
}

std::uint64_t Load(const char* from, std::size_t bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, from, bytes);
  return word;
}

}  // namespace

std::uint64_t KeyTable::HashOf(std::string_view key) {
  constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15U, kOther = 0xD6E8FEB86659FD93U;
  const std::uint64_t secret = Secret();
  std::uint64_t hash = secret ^ key.size();
  const char* at = key.data();
  std::size_t left = key.size();
  for (; left > 16; left -= 16, at += 16)
    hash = Mixed(Load(at, 8) ^ secret, Load(at + 8, 8) ^ hash ^ kOdd);
  const std::size_t head = left > 8 ? 8 : left;
  if (left > 0) hash = Mixed(Load(at, head) ^ secret, Load(at + head, left - head) ^ hash ^ kOdd);
  return Mixed(hash ^ kOther, secret ^ kOdd);
}

std::optional<std::uint32_t> KeyTable::Find(std::string_view key, std::uint64_t hash) const {
  if (m_slots.empty()) return std::nullopt;
  const std::size_t mask = m_slots.size() - 1;
  for (std::size_t slot = hash & mask; m_slots[slot] != 0; slot = (slot + 1) & mask) {
    const std::uint32_t number = m_slots[slot] - 1;
    if (m_entries[number].hash == hash && (*this)[number] == key) return number;
  }
  return std::nullopt;
}

std::uint32_t KeyTable::Insert(std::string_view key, std::uint64_t hash) {
  if ((m_entries.size() + 1) * 2 > m_slots.size()) Grow();
  m_entries.push_back({hash, m_bytes.size(), key.size()});
  m_bytes.append(key);
  const auto number = static_cast<std::uint32_t>(m_entries.size() - 1);
  Place(number);
  return number;
}

void KeyTable::Place(std::uint32_t number) {
  const std::size_t mask = m_slots.size() - 1;
  std::size_t slot = m_entries[number].hash & mask;
  while (m_slots[slot] != 0) slot = (slot + 1) & mask;
  m_slots[slot] = number + 1;
}

void KeyTable::Grow() {
  constexpr std::size_t kFirst = 64;
  m_slots.assign(m_slots.empty() ? kFirst : m_slots.size() * 2, 0);
  for (std::size_t i = 0; i < m_entries.size(); ++i) Place(static_cast<std::uint32_t>(i));
}

void KeyTable::Clear() {
  m_slots.clear();
  m_entries.clear();
  m_bytes.clear();
}
