#include "docview/dialogs/long_work.h"

#include "docview/dialogs/work_box.h"
#include "docview/document.h"

bool LongWork::DoPiece(std::chrono::milliseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  do {
    if (DoPart()) return true;
  } while (std::chrono::steady_clock::now() < end);
  return false;
}

bool RunLongWork(Host& host, CDocument* document, const LongWorkTexts& texts, LongWork& work) {
  if (work.DoPiece(host.Pieces().first)) return true;
  CWorkBox box(host, texts, work);
  if (document) document->BeginWork();
  const bool done = box.DoModal() == CDialog::kIdOk;
  if (document) document->EndWork();
  return done;
}
