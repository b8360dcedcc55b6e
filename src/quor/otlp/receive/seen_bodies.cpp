#include "quor/otlp/receive/seen_bodies.h"

#include <openssl/evp.h>

#include <memory>
#include <utility>

SeenBodies::Key SeenBodies::KeyOf(const std::string& peer, const std::string& kind, Bytes body) {
  const std::string before = peer + '\0' + kind + '\0';
  Key key{};
  const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> digest(EVP_MD_CTX_new(),
                                                                  EVP_MD_CTX_free);
  EVP_DigestInit_ex(digest.get(), EVP_sha256(), nullptr);
  EVP_DigestUpdate(digest.get(), before.data(), before.size());
  EVP_DigestUpdate(digest.get(), body.data(), body.size());
  EVP_DigestFinal_ex(digest.get(), key.data(), nullptr);
  return key;
}

SeenBodies::Look SeenBodies::Enter(const Key& key, Clock::time_point now, OtlpSink::Done done) {
  Forget(now);
  const auto [place, isNew] = m_bodies.try_emplace(key);
  Body& body = place->second;
  if (body.taken) return Look::Taken;
  if (body.waiting.size() >= kWaitingMax) return Look::TooMany;
  body.waiting.push_back(std::move(done));
  return isNew ? Look::New : Look::Waits;
}

std::vector<OtlpSink::Done> SeenBodies::Settle(const Key& key, bool taken, Clock::time_point now) {
  const auto place = m_bodies.find(key);
  if (place == m_bodies.end()) return {};
  std::vector<OtlpSink::Done> waiting = std::exchange(place->second.waiting, {});
  if (taken) {
    place->second.taken = true;
    m_taken.push_back({now, key});
  } else {
    m_bodies.erase(place);
  }
  Forget(now);
  return waiting;
}

void SeenBodies::Forget(Clock::time_point now) {
  while (!m_taken.empty() &&
         (m_taken.size() > kBodiesMax || now - m_taken.front().first > kMemory)) {
    m_bodies.erase(m_taken.front().second);
    m_taken.pop_front();
  }
}
