// Every failing step of a conversion: its message, what stays on the disk, and the document.
#include <unistd.h>

#include "conversion_fixture.h"
#include "documents/trace_file_conversion.h"
#include "file_calls.h"
#include "support/file_limit.h"

namespace {

namespace fs = std::filesystem;

class ConversionFailureTest : public ConversionTest {
 protected:
  // Converts the file alone, on this thread. `atEnd` runs when the new file is whole.
  bool Converts(const std::string& path, const std::function<void()>& atEnd = {}) {
    m_words.clear();
    const auto old = MappedFile::Open(path);
    ConversionCallbacks callbacks;
    callbacks.progress = [&](std::uint64_t, bool last) {
      if (last && atEnd) atEnd();
      return ConversionControl::Continue;
    };
    callbacks.showMessage = [this](const char* words, BoxIcon icon) {
      m_words += std::string(icon == BoxIcon::Stop ? "stop: " : "warning: ") + words + "\n";
    };
    OldConversion result;
    return ConvertTraceFile(*old, path, callbacks, &result) != nullptr;
  }
  // Opens the file, reads each box as it comes, and gives the texts.
  std::string WordsOfOpening(const std::string& path) {
    m_host.AnswerBox(BoxAnswer::Yes);
    m_document = Open(path);
    EXPECT_NE(m_document, nullptr);
    EXPECT_TRUE(m_host.RunUntil([this] {
      m_host.ClosePostedBoxes();
      return ReportedLines("posted box").find("Error opening") != std::string::npos;
    }));
    m_host.RunPosted();
    return ReportedLines("posted box");
  }
  static FileCalls::Callback RefusesToRemoveTheOldFile() {
    return [renamed = false](const std::string& call) mutable {
      renamed = renamed || call.starts_with("rename");
      return renamed && call == "unlink web.trc.old" ? EBUSY : 0;
    };
  }
  static std::string Boxes(const std::string& words) {
    return "posted box Tessera [stop] \"" + words +
           "\" (OK)\nposted box Tessera [stop] \"Error opening trace file\" (OK)\n";
  }

  std::string m_words;
  CTraceFileDoc* m_document = nullptr;
};

TEST_F(ConversionFailureTest, AFolderInTheWayOfTheTemporaryFile) {
  const std::string path = OldFile(3);
  fs::create_directory(path + ".tmp");
  EXPECT_EQ(WordsOfOpening(path), Boxes("Error creating temporary file"));
  EXPECT_EQ(Folder(), "web.trc(old) web.trc.tmp/ ");
}

TEST_F(ConversionFailureTest, AFolderThatMayNotBeWritten) {
  const std::string path = OldFile(3);
  // In a process of its own, which gives up the rights that an administrator has.
  EXPECT_EXIT(
      {
        fs::permissions(m_temp.Path(), fs::perms(0555));
        if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
        const bool converted = Converts(path);
        _exit(!converted && m_words == "stop: Error creating temporary file\n" ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
  fs::permissions(m_temp.Path(), fs::perms(0755));
  EXPECT_EQ(Folder(), "web.trc(old) ");
}

TEST_F(ConversionFailureTest, NoSpaceForTheHeader) {
  const std::string path = OldFile(0);
  const FileLimit limit(8);
  EXPECT_EQ(WordsOfOpening(path), Boxes("Error writing to temporary file"));
  EXPECT_EQ(Folder(), "web.trc(old) web.trc.tmp ");
}

TEST_F(ConversionFailureTest, NoSpaceForATrace) {
  const std::string path = OldFile(3000);
  const FileLimit limit(10000);
  EXPECT_EQ(WordsOfOpening(path), Boxes("Error writing to temporary file"));
  EXPECT_EQ(fs::file_size(path + ".tmp"), 10000u) << "what was written stays";
  EXPECT_EQ(Folder(), "web.trc(old) web.trc.tmp ");
}

TEST_F(ConversionFailureTest, NoSpaceForTheLastBytes) {
  const std::string path = OldFile(10);  // less than the buffer holds
  const FileLimit limit(100);
  EXPECT_EQ(WordsOfOpening(path), Boxes("Error writing to temporary file"));
  EXPECT_EQ(Folder(), "web.trc(old) web.trc.tmp ");
}

TEST_F(ConversionFailureTest, AFolderInTheWayOfTheOldName) {
  const std::string path = OldFile(3);
  fs::create_directory(path + ".old");
  EXPECT_EQ(WordsOfOpening(path), Boxes("Error removing old trace file"));
  EXPECT_EQ(Folder(), "web.trc(old) web.trc.old/ web.trc.tmp ");
}

TEST_F(ConversionFailureTest, AMissingOldFileIsNoFailure) {
  const std::string path = OldFile(3);
  EXPECT_TRUE(Converts(path));
  EXPECT_EQ(m_words, "");
  EXPECT_EQ(Folder(), "web.trc ");
}

TEST_F(ConversionFailureTest, TheFileHasGoneMeanwhile) {
  const std::string path = OldFile(3);
  EXPECT_FALSE(Converts(path, [&] { fs::remove(path); }));
  EXPECT_EQ(m_words, "stop: Error renaming old trace file\n");
  EXPECT_EQ(Folder(), "web.trc.tmp ");
}

TEST_F(ConversionFailureTest, TheTemporaryFileHasGoneMeanwhile) {
  const std::string path = OldFile(3);
  EXPECT_FALSE(Converts(path, [&] { fs::remove(path + ".tmp"); }));
  EXPECT_EQ(m_words, "stop: Error renaming temporary file\n");
  EXPECT_EQ(Folder(), "web.trc.old(old) ") << "the old file survives, and there is none to open";
}

TEST_F(ConversionFailureTest, AnOldFileThatCannotBeDeletedIsAWarningAndTheConversionGoesOn) {
  const std::string path = OldFile(3);
  const FileCalls interceptor(RefusesToRemoveTheOldFile());
  EXPECT_TRUE(Converts(path));
  EXPECT_EQ(m_words, "warning: Error removing old trace file\n");
  EXPECT_EQ(Folder(), "web.trc web.trc.old(old) ");
}

TEST_F(ConversionFailureTest, ANewFileThatCannotBeOpenedFailsWithNoMessageOfItsOwn) {
  const std::string path = OldFile(3);
  const FileCalls interceptor([&](const std::string& call) {
    if (call == "unlink web.trc.old" && fs::exists(path + ".old")) {
      fs::remove(path);
      fs::create_directory(path);
    }
    return 0;
  });
  EXPECT_FALSE(Converts(path));
  EXPECT_EQ(m_words, "");
}

TEST_F(ConversionFailureTest, AFailedConversionLeavesTheDocumentLoadingWithoutTracesAndTheBoxUp) {
  const std::string path = OldFile(3);
  fs::create_directory(path + ".old");
  WordsOfOpening(path);
  EXPECT_TRUE(m_document->m_loading);
  EXPECT_TRUE(m_document->m_traces.empty());
  EXPECT_EQ(m_document->FileSize(), 0u);
  EXPECT_EQ(ReportedLines("start").substr(0, 19), "start Converting...");
  EXPECT_EQ(ReportedLines("done") + ReportedLines("start Loading"), "");
  EXPECT_EQ(m_log.Reported("view message"), "") << "views are not told";
  EXPECT_TRUE(CreateForWriting(path)) << "what stood is released";
  m_cancelEvents.at(0)->Set();  // the box's Cancel does nothing more
  m_app.m_frame.MDIGetActive()->OnClose();
  EXPECT_TRUE(m_template->Documents().empty());
  m_host.RunPosted();
  EXPECT_EQ(ReportedLines("done"), "");
}

TEST_F(ConversionFailureTest, TheNextBoxComesWhenTheUserHasReadTheFirst) {
  const std::string path = OldFile(3);
  fs::create_directory(path + ".tmp");
  m_host.AnswerBox(BoxAnswer::Yes);
  CTraceFileDoc* const document = Open(path);
  ASSERT_TRUE(m_host.RunUntil([this] { return !ReportedLines("posted box").empty(); }));
  m_host.RunPosted();  // the interface thread is not blocked
  EXPECT_EQ(ReportedLines("posted box"),
            "posted box Tessera [stop] \"Error creating temporary file\" (OK)\n");
  EXPECT_TRUE(document->m_loading);
  m_host.ClosePostedBoxes();
  EXPECT_TRUE(m_host.RunUntil(
      [this] { return ReportedLines("posted box") == Boxes("Error creating temporary file"); }));
}

TEST_F(ConversionFailureTest, ClosingTheDocumentUnderAnOpenBoxDoesNotWaitForItsReader) {
  const std::string path = OldFile(3);
  fs::create_directory(path + ".tmp");
  m_loads.stopWaitMs = 20000;
  m_host.AnswerBox(BoxAnswer::Yes);
  CTraceFileDoc* const document = Open(path);
  ASSERT_TRUE(m_host.RunUntil([this] { return !ReportedLines("posted box").empty(); }));
  document->OnCloseDocument();
  EXPECT_TRUE(CreateForWriting(path)) << "the thread has ended before the wait's limit";
  EXPECT_EQ(ReportedLines("posted box"), Boxes("Error creating temporary file"));
  EXPECT_EQ(ReportedLines("done"), "") << "so that it was not left to itself";
  m_host.ClosePostedBoxes();
  m_host.RunPosted();
}

TEST_F(ConversionFailureTest, BoxesAfterACancelAreShownWithoutAWait) {
  const std::string path = OldFile(3);
  fs::create_directory(path + ".old");
  m_host.AnswerBox(BoxAnswer::Yes);
  HANDLE cancel;
  m_loads.beforeWalk = [&cancel] { cancel->Set(); };
  CTraceFileDoc document(m_host, m_loads);
  cancel = document.CancelEvent();
  ASSERT_TRUE(document.OnOpenDocument(path));
  EXPECT_TRUE(m_host.RunUntil(
      [this] { return ReportedLines("posted box") == Boxes("Error removing old trace file"); }));
}

TEST_F(ConversionFailureTest, TheWarningOfAnOldFileThatStaysIsReadBeforeTheLoadGoesOn) {
  const std::string path = OldFile(3);
  CTraceFileDoc document(m_host, m_loads);
  const FileCalls interceptor(RefusesToRemoveTheOldFile());
  m_host.AnswerBox(BoxAnswer::Yes);
  ASSERT_TRUE(document.OnOpenDocument(path));
  ASSERT_TRUE(m_host.RunUntil([this] { return !ReportedLines("posted box").empty(); }));
  m_host.RunPosted();
  EXPECT_EQ(ReportedLines("posted box"),
            "posted box Tessera [warning] \"Error removing old trace file\" (OK)\n");
  EXPECT_EQ(ReportedLines("start Loading"), "");
  m_host.ClosePostedBoxes();
  ASSERT_TRUE(FinishLoad(document));
  EXPECT_EQ(Texts(document), "trace 1 trace 2 trace 3 ");
  EXPECT_TRUE(CreateForWriting(path + ".old")) << "only its view is kept";
}

}  // namespace
