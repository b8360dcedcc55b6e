// The cells of an export that hold an address show, while this stands, what it is the address of.
#pragma once

#include "listview/export/export_cells.h"

class AddressesAsText {
 public:
  AddressesAsText() = default;
  ~AddressesAsText() { SetAddressWriter(m_before); }
  AddressesAsText(const AddressesAsText&) = delete;
  AddressesAsText& operator=(const AddressesAsText&) = delete;

 private:
  const AddressWriter m_before =
      SetAddressWriter([](std::string& out, const std::string& text) { out += text; });
};
