// One item out of a menu.
#include "shell/menus/menu_resources.h"

MenuItem ItemIn(unsigned resource, unsigned id) {
  for (const MenuPopup& popup : MenuOf(resource))
    for (const MenuItem& item : popup.items)
      if (item.id == id) return item;
  return {};
}
