// What the traced applications need of the service around them.
//
// Threads  The service's one thread.
#pragma once

#include <string>

class Hub;
struct Account;

class MachineRouter {
 public:
  // Chooses the hub that takes a machine's traces; the local one for an unknown name.
  virtual Hub& HubForMachine(const std::string& machine, const Account& account) = 0;
  virtual std::string WhyUnreachable(const std::string& /*machine*/) const { return {}; }
  // The folder in which applications are watched has changed.
  virtual void OnPlaceChanged() = 0;

 protected:
  ~MachineRouter() = default;
};
