// What an import makes of bytes: each trace as one line of its fields.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "base/mapped_file.h"
#include "import/fields/import_clock.h"
#include "import/fields/import_field.h"
#include "import/import_parts.h"
#include "import/line_reader.h"
#include "records/trc_walk.h"
#include "support/temp_dir.h"

// "COMPONENT/CATEGORY APP PID THREAD text", with the milliseconds of the day before it.
struct WalkedTraces {
  NameMap names = {};
  std::vector<std::string> traces = {};
  std::vector<std::uint64_t> tics = {};

  void OnName(NameId id, std::string_view text) { names[id].name = text; }
  void OnTrace(const std::uint8_t* record) {
    const RawTrace trace(record);
    const auto [hour, minute, second, ms] = UnpackTime(trace.Time());
    traces.push_back(std::to_string(((hour * 60 + minute) * 60 + second) * 1000 + ms) + " " +
                     NameOf(names, trace.ComponentId()) + "/" + NameOf(names, trace.CategoryId()) +
                     " " + NameOf(names, trace.AppId()) + " " + NameOf(names, trace.PidId()) + " " +
                     NameOf(names, trace.TidId()) + " " + std::string(trace.Text()));
    tics.push_back(trace.TicCount());
  }
  void OnUnknownTag(std::uint64_t position) { ADD_FAILURE() << position; }
  void OnCutRecord(std::uint64_t position) { ADD_FAILURE() << position; }
  bool OnProgress(std::uint64_t) { return true; }
};

struct ImportedFile {
  WalkedTraces walked;
  std::vector<std::string> texts;
  bool isWhole = false;
};

// `Import` takes fields, parts and what else is given.
template <class Import, class... More>
ImportedFile ImportBytes(const std::string& bytes, ImportFieldRules rules, More... more) {
  ImportedFile imported;
  const TempDir directory;
  const int descriptor = open(directory.File("in", bytes).c_str(), O_RDONLY | O_CLOEXEC);
  LineReader reader(descriptor, [] { return true; });
  ImportClock clock({.zone = ImportZone(0), .format = ""});
  const ImportFields fields(std::move(rules), clock);
  ImportParts parts(kTrcFileBytesMax);
  std::string why;
  {
    Import import(fields, parts, more...);
    EXPECT_TRUE(parts.Begin(directory.File("out.trc"), &why)) << why;
    EXPECT_TRUE(import.Read(reader, "in", &why)) << why;
    EXPECT_TRUE(parts.Finish(&why)) << why;
    imported.texts = import.Texts();
    imported.isWhole = import.IsWhole();
  }
  close(descriptor);
  const auto file = MappedFile::Open(directory.File("out.trc"), &why);
  EXPECT_TRUE(file) << why;
  if (file) WalkTrc(file->View(), imported.walked);
  return imported;
}
