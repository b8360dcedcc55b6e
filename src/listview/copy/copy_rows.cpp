#include "listview/copy/copy_rows.h"

#include "listview/copy/copy_work.h"

namespace {

const char* WhyNot(CopyWork::Result result) {
  switch (result) {
    case CopyWork::Result::TooManyBytes:
      return "Nothing was copied: these traces are more than 256 MiB in this form.\nSelect fewer, "
             "or use File > Export.";
    case CopyWork::Result::NoSuchFilter:
      return "Nothing was copied: a filter text for so many traces would be too long.\nSelect "
             "fewer, or traces that follow one another.";
    case CopyWork::Result::TracesGone:
      return "Nothing was copied: the traces have gone.";
    case CopyWork::Result::Unfinished:
    case CopyWork::Result::Whole:
      break;
  }
  return nullptr;
}

}  // namespace

void CopyRowsAs(CTraceDoc& document, CopiedTraces& traces, CopyForm form) {
  Host& host = document.GetHost();
  StoreCopyForm(form);
  CopyWork work(document, traces, form, CopiesHeadings());
  {
    const CWaitCursor wait(host);
    if (!RunLongWork(host, &document, {"Copy Rows", "Copying...", "list"}, work)) return;
  }
  const char* why = WhyNot(work.GetResult());
  if (!why && !host.PutOnClipboard(work.Text())) why = "Nothing was copied: there is no clipboard.";
  if (why) host.MessageBox({why, BoxIcon::None, BoxButtons::Ok});
}
