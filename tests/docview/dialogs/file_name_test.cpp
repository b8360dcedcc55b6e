// Which names of a save dialog get an extension.
#include "docview/dialogs/file_name.h"

#include <gtest/gtest.h>

namespace {

FileDialogRequest Save(std::string extension, std::vector<FileFilter> filters) {
  FileDialogRequest request;
  request.save = true;
  request.defaultExtension = std::move(extension);
  request.filters = std::move(filters);
  return request;
}

const FileDialogRequest kTraces =
    Save(".trc", {{"Trace Files (*.trc)", "*.trc"}, {"All Files (*.*)", "*"}});
const FileDialogRequest kTable =
    Save(".csv", {{"Comma-separated Files", "*.csv"}, {"Text Files", "*.txt"}, {"All Files", "*"}});
constexpr std::size_t kFirst = 0, kText = 1, kAllTraces = 1, kAllTables = 2;

std::string Trace(const std::string& name, std::size_t filter = kFirst) {
  return WithDefaultExtension(name, kTraces, filter);
}
std::string Table(const std::string& name, std::size_t filter) {
  return WithDefaultExtension(name, kTable, filter);
}

TEST(FileName, ANameWithoutADotGetsTheExtension) {
  EXPECT_EQ(Trace("web"), "web.trc");
  EXPECT_EQ(Trace("/var/web"), "/var/web.trc");
  EXPECT_EQ(Trace("/var.d/web"), "/var.d/web.trc");
}

TEST(FileName, AnAddressOrAHostNameIsNoExtension) {
  EXPECT_EQ(Trace("Traces sent to 127.0.0.1"), "Traces sent to 127.0.0.1.trc");
  EXPECT_EQ(Trace("Traces sent to build.example"), "Traces sent to build.example.trc");
  EXPECT_EQ(Trace("web."), "web..trc");
}

TEST(FileName, ANameThatEndsInItStaysWhateverItsCase) {
  EXPECT_EQ(Trace("web.trc"), "web.trc");
  EXPECT_EQ(Trace("WEB.TRC"), "WEB.TRC");
  EXPECT_EQ(Trace("web.trc.old"), "web.trc.old.trc");
}

TEST(FileName, TheFilterThatIsChosenNamesTheExtension) {
  EXPECT_EQ(Table("rows", kFirst), "rows.csv");
  EXPECT_EQ(Table("rows", kText), "rows.txt");
  EXPECT_EQ(Table("rows 1.5", kText), "rows 1.5.txt");
}

TEST(FileName, AnExtensionOfAnotherFilterWasTypedOnPurpose) {
  EXPECT_EQ(Table("rows.txt", kFirst), "rows.txt");
  EXPECT_EQ(Table("rows.csv", kText), "rows.csv");
}

TEST(FileName, AmongAllFilesAnExtensionBeginsWithALetter) {
  EXPECT_EQ(Trace("web.old", kAllTraces), "web.old");
  EXPECT_EQ(Trace("web", kAllTraces), "web.trc");
  EXPECT_EQ(Trace("Traces sent to 127.0.0.1", kAllTraces), "Traces sent to 127.0.0.1.trc");
  EXPECT_EQ(Trace("/var.d/web", kAllTraces), "/var.d/web.trc");
  EXPECT_EQ(Table("rows", kAllTables), "rows.csv");
}

TEST(FileName, SeveralPatternsOfAFilterAllFit) {
  const FileDialogRequest sources = Save(".cpp", {{"Sources", "*.c; *.cpp;*.cxx"}});
  EXPECT_EQ(WithDefaultExtension("a.cxx", sources, 0), "a.cxx");
  EXPECT_EQ(WithDefaultExtension("a.h", sources, 0), "a.h.c");
}

TEST(FileName, WithoutADefaultOrANameNothingIsAdded) {
  EXPECT_EQ(WithDefaultExtension("Makefile", Save("", {{"All Files", "*"}}), 0), "Makefile");
  EXPECT_EQ(Trace(""), "");
}

TEST(FileName, WithoutFiltersTheDefaultIsAdded) {
  EXPECT_EQ(WithDefaultExtension("web.1", Save(".trc", {}), 0), "web.1.trc");
}

}  // namespace
