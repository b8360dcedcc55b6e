// The scenes of the pictures: the real windows in a state worth a look.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <string>

class CTesseraApp;
class QtShellFaces;
class QWidget;

class ShotScenes {
 public:
  // `folder` exists; pictures go there as NAME.png.
  ShotScenes(CTesseraApp& tessera, QtShellFaces& faces, QString folder);

  void Empty();
  void File(const std::string& path);  // opens it; the other scenes show it
  void Menu();
  void PopUp();
  void Maximised();
  // Looks for numbers in the view in front.
  void Hits(const QString& name);
  void Tiled(const std::string& second);
  void Options();
  void About();
  void Help(const QStringList& topics);
  void Progress(const std::string& path);

  // All pictures from here on are dark, and named so.
  void UseDark();
  bool Good() const { return m_good; }

  // What other scenes are made of.
  QWidget& Window();
  void Settle();  // the window takes in what has changed
  void Save(QWidget& widget, const QString& name);
  // Does this with the next modal dialog, once it stands.
  void Answer(std::function<void(QWidget&)> act);
  void SaveModal(unsigned command, const QString& name);
  void SaveMenu(const QString& title, const QString& name);

 private:
  CTesseraApp& m_tessera;
  QtShellFaces& m_faces;
  QString m_folder;
  bool m_dark = false;
  bool m_good = true;
};
