#include "listview/copy/copy_form.h"

#include "settings/registry.h"

namespace {

constexpr char kForm[] = "Copy Rows As";
constexpr char kHeadings[] = "Copy Headings";

}  // namespace

CopyForm LastCopyForm() {
  const unsigned stored = NtRegGet(HKEY_CURRENT_USER, kRegTraceView, kForm, 0U);
  return stored < kCopyForms ? static_cast<CopyForm>(stored) : CopyForm::Text;
}

void StoreCopyForm(CopyForm form) {
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, kForm, static_cast<unsigned>(form));
}

bool CopiesHeadings() {
  return NtRegGet(HKEY_CURRENT_USER, kRegTraceView, kHeadings, 1U) != 0;
}

void StoreCopiesHeadings(bool on) {
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, kHeadings, on ? 1U : 0U);
}
