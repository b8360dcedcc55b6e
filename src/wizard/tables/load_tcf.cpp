#include "wizard/tables/load_tcf.h"

WizLoad LoadTcf(std::istream&, WizApps&) {
  return WizLoad::Invalid;
}
