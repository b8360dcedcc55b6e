// "About Tessera": a plain box with the program's icon and version line.
//
// Threads  Interface thread.
#pragma once

#include <QDialog>

class AboutBox : public QDialog {
 public:
  AboutBox(const QString& versionLine, QWidget* parent);
};
