#include "tree/find/find_dialog.h"

#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

CFindDialog::CFindDialog(Host& host)
    : CDialog(host),
      searchText(FindSettings.searchText),
      ignoreCase(FindSettings.ignoreCase),
      backward(FindSettings.backward),
      regularExpression(FindSettings.regularExpression),
      wordSearch(FindSettings.wordSearch) {}

void CFindDialog::OnInitDialog() {
  OnChangeText(searchText);
}

void CFindDialog::OnChangeText(const std::string& text) {
  m_okEnabled = !text.empty();
}

void CFindDialog::OnOK() {
  const int literal = !regularExpression;
  if (!RegexPrepare(searchText.c_str(), ignoreCase, literal, wordSearch, 0)) {
    GetHost().MessageBox({.text = "Illegal search pattern.", .icon = BoxIcon::Stop});
    return;
  }
  FindSettings = {searchText, ignoreCase, backward, regularExpression, wordSearch};
  CDialog::OnOK();
}
