// The base class of the objects that hints and messages carry.
#pragma once

class CObject {
 public:
  virtual ~CObject() = default;
};
