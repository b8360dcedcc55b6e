#include "listview/source/find_text_dialog.h"

#include <utility>

FindTextDialog::FindTextDialog(Host& host, RichEditFind start,
                               std::function<void(const RichEditFind&)> findNext)
    : CDialog(host),
      m_find(std::move(start)),
      m_findNext(std::move(findNext)),
      m_face(host.ShowModeless(*this)) {}

void FindTextDialog::OnOK() {
  if (MayFind()) m_findNext(m_find);
}
