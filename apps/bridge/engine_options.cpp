#include "engine_options.h"

#include "engine_keys.h"
#include "quor/address/relay_address.h"
#include "quor/protocol/tls.h"

void EngineOptions::AddTo(CLI::App& app) {
  app.add_option("--engine", m_servers,
                 "The servers, separated by commas. Over TLS, but to this machine only if tls:// "
                 "stands before them")
      ->type_name("HOST[:PORT]")
      ->required();
  app.add_option("--stream", m_stream, "The name of the stream [default: QUOR1]")
      ->type_name("NAME");
  app.add_option("--keys-dir", m_keysFolder, "The certificates for TLS")->type_name("DIR");
}

void EngineOptions::Complete() {
  std::string why;
  const std::string servers = IsRelayAddress(m_servers) ? m_servers : "nats://" + m_servers;
  const auto address = ParseRelayAddress(servers + "/" + m_stream, &why);
  if (!address) throw CLI::ValidationError("--engine", why);
  if (address->stream != m_stream)
    throw CLI::ValidationError("--engine", "servers only; the stream is named by --stream");
  m_address.servers = address->ServerTexts();
  if (!address->tls) return;
  const std::string folder = m_keysFolder.empty() ? KeysFolder() : m_keysFolder;
  if (!UseKeys(folder, m_address, &why)) throw CLI::ValidationError("--keys-dir", why);
}

NatsAddress EngineOptions::Address(const std::string& name) const {
  NatsAddress address = m_address;
  address.name = name;
  return address;
}
