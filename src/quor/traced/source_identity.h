// By what a monitor tells sources apart, and whose they are.
//
// Threads  Pure.
#pragma once

#include "quor/accounts/accounts.h"
#include "quor/hub/source.h"

// 16 bytes made of machine, process and its start. A source that returns from another machine's
// monitors is a new instance for those of this one, who have not seen its traces of the meantime.
std::array<std::uint8_t, 16> InstanceOf(const std::string& machine, std::uint32_t pid,
                                        std::uint64_t startedNs, std::uint32_t moves);

// At the service of a machine: also its account, in the text of its process too.
void PutAccount(const Account& account, std::uint32_t pid, Source& source);
