// The commands of quor-bridge.
#pragma once

#include <memory>

#include "verb.h"

std::unique_ptr<Verb> MakeConf(CLI::App& program);
std::unique_ptr<Verb> MakeInit(CLI::App& program);
std::unique_ptr<Verb> MakePublish(CLI::App& program);
std::unique_ptr<Verb> MakeRead(CLI::App& program);
std::unique_ptr<Verb> MakeOtlpIn(CLI::App& program);
std::unique_ptr<Verb> MakeOtlpOut(CLI::App& program);
