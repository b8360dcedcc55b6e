// How the commands reach the engine that an address names.
#pragma once

#include <optional>
#include <string>

#include "quor/address/relay_address.h"
#include "quor/engine/jetstream/nats_link.h"

// The certificate of a folder of keys, and its own user's subjects of answers. False and a reason
// if a file cannot be read, or if the certificate has no e-mail address.
bool UseKeys(const std::string& folder, NatsAddress& at, std::string* why);
// With the certificate of this user's keys folder if the address asks for TLS. None and a reason if
// its files are missing.
std::optional<NatsAddress> EngineAt(const RelayAddress& address, std::string* why);
