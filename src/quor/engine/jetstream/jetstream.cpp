#include "quor/engine/jetstream/jetstream.h"

#include <nlohmann/json.hpp>

#include "base/fail_with.h"
#include "quor/engine/jetstream/stream_reader.h"

namespace {

std::string KeySubject(const std::string& bucket, const std::string& key) {
  return "$KV." + bucket + "." + key;
}

Bytes BytesOf(const BusMessage& message) {
  return {message.body.data(), message.body.size()};
}

constexpr char kNoStream[] = "no server of the engine has the stream now";

}  // namespace

std::unique_ptr<JetStream> JetStream::Make(const NatsAddress& address, const std::string& stream,
                                           EngineUser& user, std::string* why) {
  std::unique_ptr<JetStream> engine(new JetStream(stream, user));
  if (!engine->Begin(address, why)) return nullptr;
  return engine;
}

bool JetStream::Begin(const NatsAddress& address, std::string* why) {
  NatsHeard heard;
  heard.up = [this](const std::string& server) {
    std::lock_guard calling(m_calling);
    m_user.OnUp(server);
  };
  heard.down = [this](const std::string& reason) {
    std::lock_guard calling(m_calling);
    m_user.OnDown(reason);
  };
  heard.refused = [this](const std::string& what) {
    {
      std::lock_guard asking(m_asking);
      if (m_asker) m_asker->Refuse(what);
    }
    std::lock_guard calling(m_calling);
    m_user.OnRefused(what);
  };
  m_link = NatsLink::Make(address, heard, why);
  if (!m_link) return false;
  const auto acked = [this](std::uint64_t token, const BusMessage& answer) {
    OnAnswer(token, answer);
  };
  auto asker = NatsAsker::Make(*m_link, acked, why);
  std::lock_guard asking(m_asking);
  m_asker = std::move(asker);
  return m_asker != nullptr;
}

JetStream::~JetStream() {
  m_services.clear();
  std::unique_ptr<NatsAsker> asker;
  {
    std::lock_guard asking(m_asking);
    asker = std::move(m_asker);
  }
  asker.reset();
  m_link.reset();
}

void JetStream::OnAnswer(std::uint64_t token, const BusMessage& answer) {
  int error = 0;
  EngineAck ack;
  if (answer.status)
    ack.why = kNoStream;
  else
    ack = ReadPublishAck(BytesOf(answer), error);
  std::lock_guard calling(m_calling);
  m_user.OnAck(token, ack);
}

bool JetStream::Publish(const std::string& subject, const std::string& id, Bytes body,
                        std::uint64_t token, std::string* why) {
  return m_link->Send(subject, m_asker->AckSubject(token), body, id, nullptr, why);
}

std::unique_ptr<EngineReader> JetStream::Read(const std::string& filter, EngineStart start,
                                              std::string* why) {
  PullTarget target;
  target.stream = m_stream;
  target.filter = filter;
  target.start = start;
  return StreamReader::Make(*m_link, std::move(target), 0, why);
}

std::unique_ptr<EngineReader> JetStream::Watch(const std::string& bucket, const std::string& keys,
                                               std::string* why) {
  PullTarget target;
  target.stream = "KV_" + bucket;
  target.filter = KeySubject(bucket, keys);
  target.lastOfEach = true;
  return StreamReader::Make(*m_link, std::move(target), KeySubject(bucket, "").size(), why);
}

std::optional<EngineValue> JetStream::Get(const std::string& bucket, const std::string& key,
                                          std::chrono::milliseconds deadline, std::string* why) {
  const nlohmann::json body = {{"last_by_subj", KeySubject(bucket, key)}};
  const std::string question = body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  const Bytes bytes(reinterpret_cast<const std::uint8_t*>(question.data()), question.size());
  const auto answer =
      m_asker->Ask("$JS.API.STREAM.MSG.GET.KV_" + bucket, bytes, deadline, nullptr, why);
  if (!answer) return std::nullopt;
  if (answer->status) return FailWith(why, kNoStream, std::nullopt);
  EngineValue value;
  int error = 0;
  if (ReadStoredMessage(BytesOf(*answer), value, error, why)) return value;
  if (error == kNoSuchMessage) return EngineValue{};
  return std::nullopt;
}

Engine::Put JetStream::PutValue(const std::string& bucket, const std::string& key, Bytes value,
                                std::uint64_t& revision, std::chrono::milliseconds deadline,
                                std::string* why) {
  const auto answer = m_asker->Ask(KeySubject(bucket, key), value, deadline, &revision, why);
  if (!answer) return Put::Failed;
  if (answer->status) return FailWith(why, kNoStream, Put::Failed);
  int error = 0;
  const auto ack = ReadPublishAck(BytesOf(*answer), error);
  if (error == kOtherRevision)
    return FailWith(why, "\"" + key + "\" was changed by someone else", Put::Changed);
  if (!ack.stored) return FailWith(why, ack.why, Put::Failed);
  revision = ack.sequence;
  return Put::Done;
}

std::optional<std::vector<std::uint8_t>> JetStream::Ask(const std::string& subject, Bytes question,
                                                        std::chrono::milliseconds deadline,
                                                        std::string* why) {
  auto answer = m_asker->Ask(subject, question, deadline, nullptr, why);
  if (!answer) return std::nullopt;
  if (answer->status == 503)
    return FailWith(why, "nobody answers \"" + subject + "\"", std::nullopt);
  return std::move(answer->body);
}

bool JetStream::Serve(const std::string& subject, Answer answer, std::string* why) {
  const auto heard = [this, answer = std::move(answer)](const BusMessage& question) {
    if (question.reply.empty()) return;
    const auto words = answer(BytesOf(question));
    // Who asks meets a silence if it cannot be sent.
    m_link->Send(question.reply, "", {words.data(), words.size()}, "", nullptr, nullptr);
  };
  auto service = NatsSubscription::Make(*m_link, subject, heard, why);
  if (!service) return false;
  // Who asks from now on is answered, if a server is connected.
  m_link->Flush();
  std::lock_guard asking(m_asking);
  m_services.push_back(std::move(service));
  return true;
}
