// A descriptor that closes itself, in the service.
#pragma once

#include <asio/posix/stream_descriptor.hpp>

using OwnedDescriptor = asio::posix::stream_descriptor;
