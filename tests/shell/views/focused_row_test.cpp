// The row that had the focus is found again, or the one that took its place.
#include "shell/views/focused_row.h"

#include <gtest/gtest.h>

#include "base/mapped_file.h"
#include "notes/fingerprint.h"
#include "records/trace_event.h"
#include "records/trc_walk.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

class FocusedRow : public testing::Test {
 protected:
  // A file with a trace for each text.
  void Write(const std::vector<std::string>& texts) {
    TrcImage image;
    for (const std::string& text : texts) image.Trace({.text = text, .count = 1});
    m_traces.Clear();
    m_file = MappedFile::Open(image.WriteTo(m_dir.File(std::to_string(++m_files))));
    WalkTrc(m_file->View(), Sink{m_traces});
  }
  const TraceList_t& Traces() const { return m_traces; }
  ViewRow Row(std::size_t row) const { return RowOf(Traces()[row], Traces()).value_or(ViewRow()); }
  std::string Found(const ViewRow& row) const {
    const TraceEvent_i* const trace = FindRow(row, Traces());
    return trace ? trace->GetText() : "none";
  }

  struct Sink {
    TraceList_t& traces;
    void OnName(NameId, std::string_view) {}
    void OnTrace(const std::uint8_t* record) { traces.EmplaceRecord(record); }
    void OnUnknownTag(std::uint64_t) {}
    bool OnProgress(std::uint64_t) { return true; }
  };
  TempDir m_dir;
  int m_files = 0;
  std::shared_ptr<const MappedFile> m_file;
  TraceList_t m_traces;
};

TEST_F(FocusedRow, EachTraceIsFoundAtItsPlace) {
  Write({"a", "b", "c", "d", "e"});
  for (std::size_t row = 0; row < 5; ++row) {
    EXPECT_EQ(Row(row).row, row);
    EXPECT_EQ(FindRow(Row(row), Traces()), Traces()[row]);
  }
  EXPECT_FALSE(RowOf(nullptr, Traces()));
}

TEST_F(FocusedRow, ATraceThatHasMovedIsFoundByItsRecord) {
  Write({"a", "b", "c", "d", "e"});
  const ViewRow c = Row(2);
  Write({"x", "y", "a", "b", "c"});
  EXPECT_EQ(Found(c), "c");
  Write({"c", "y", "z"});
  EXPECT_EQ(Found(c), "c");
}

TEST_F(FocusedRow, OfTwoEqualRecordsTheNearestOneIsFound) {
  Write({"c", "x", "x", "c", "x", "c"});
  EXPECT_EQ(FindRow({4, Row(0).print}, Traces()), Traces()[5]);
  EXPECT_EQ(FindRow({2, Row(0).print}, Traces()), Traces()[3]);
  EXPECT_EQ(FindRow({0, Row(0).print}, Traces()), Traces()[0]);
}

TEST_F(FocusedRow, ARecordThatIsGoneLeadsToItsNumber) {
  Write({"a", "b", "c"});
  EXPECT_EQ(Found({1, 12345}), "b");
}

TEST_F(FocusedRow, AShorterFileHasNoSuchRow) {
  Write({"a", "b"});
  EXPECT_EQ(Found({2, 12345}), "none");
  EXPECT_EQ(Found({~std::uint64_t{0}, 12345}), "none");
  Write({});
  EXPECT_EQ(Found({0, 12345}), "none");
}

}  // namespace
