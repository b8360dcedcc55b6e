// The root of what travels with a hint or a message.
#pragma once

class CObject {
 public:
  virtual ~CObject() = default;
};
