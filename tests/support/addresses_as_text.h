// While it exists, the cells of an export that contain an address show the addressed text.
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
