// The scenes of the pictures: the real windows in useful states.
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
  // Searches for numbers in the view in front.
  void Hits(const QString& name);
  void Tiled(const std::string& second);
  void Options();
  void About();
  void Help(const QStringList& topics);
  void Progress(const std::string& path);

  // From now on all pictures are dark, and have "dark" in their names.
  void UseDark();
  // What follows in the names of all pictures.
  void SetMark(const QString& mark) { m_mark = mark; }
  bool Good() const { return m_good; }

  // Helpers for other scenes.
  QWidget& Window();
  void Settle();  // lets the window process all changes
  void Save(QWidget& widget, const QString& name);
  // Does this with the next modal dialog, once it is open.
  void Answer(std::function<void(QWidget&)> act);
  void SaveModal(unsigned command, const QString& name);
  void SaveMenu(const QString& title, const QString& name);

 private:
  CTesseraApp& m_tessera;
  QtShellFaces& m_faces;
  QString m_folder, m_mark;
  bool m_dark = false;
  bool m_good = true;
};
