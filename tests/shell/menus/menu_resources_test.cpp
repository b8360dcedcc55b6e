// The menus as the user reads them: one golden text per menu. "\t" stands before the shown key.
#include "shell/menus/menu_resources.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "docview/commands/command_ids.h"

namespace {

std::string Dump(unsigned resource) {
  std::string dump = "\n";
  for (const MenuPopup& popup : MenuOf(resource)) {
    dump += popup.title.empty() ? "(popup)\n" : popup.title + "\n";
    for (const MenuItem& item : popup.items) {
      std::string text = item.id ? std::to_string(item.id) + " " + item.text : "-----";
      if (const auto tab = text.find('\t'); tab != std::string::npos) text.replace(tab, 1, "\\t");
      dump += "  " + text + "\n";
      for (const MenuItem& inside : item.items)
        dump += inside.id ? "    " + std::to_string(inside.id) + " " +
                                inside.text.substr(0, inside.text.find('\t')) + "\n"
                          : "    -----\n";
    }
    if (popup.windowList) dump += "  (windows)\n";
  }
  return dump;
}

std::string Prompt(unsigned id) {
  return PromptOf(id) + " | " + ToolTipOf(id);
}

TEST(Menus, WithNoDocumentOpen) {
  EXPECT_EQ(Dump(IDR_MAINFRAME), R"(
&File
  32816 Trace &Monitor...\tAlt+M
  32807 Trace &Configuration...\tAlt+C
  57601 &Open\tCtrl+O
  -----
  32823 Trace &Wizard...\tCtrl+W
  -----
  57616 Recent File
  -----
  57665 E&xit\tAlt+F4
&View
  32800 &Options...
  -----
  59392 &Tool Bar
  59393 &Status Bar
&Help
  57667 Help Topics
  -----
  57664 &About Tessera...
)");
}

TEST(Menus, OfATraceFile) {
  EXPECT_EQ(Dump(IDR_TRACEFILE), R"(
&File
  32816 Trace &Monitor...\tAlt+M
  32807 Trace &Configuration...\tAlt+C
  57601 &Open\tCtrl+O
  57602 &Close\tCtrl+F4
  -----
  32823 Trace &Wizard...\tCtrl+W
  -----
  32809 &Save As...\tCtrl+S
  32810 &Export...
  -----
  57607 &Print...\tCtrl+P
  57609 Print Pre&view
  57606 P&rint Setup...
  -----
  57616 Recent File
  -----
  57665 E&xit\tAlt+F4
&Edit
  57634 &Copy\tCtrl+C
  32958 Copy Row&s As
    32951 &Text
    32952 Ta&bs
    32953 &CSV
    32954 &JSON
    32955 &Filter Text
    -----
    32950 As &Last Time
    32956 With &Headings
  -----
  57636 &Find\tCtrl+F
  32781 Find Ne&xt\tF3
  32957 List &Hits\tCtrl+Shift+F
  -----
  32921 &Mark\tCtrl+D
  32935 Mark Colo&ur
    32922 &1 Red
    32923 &2 Orange
    32924 &3 Yellow
    32925 &4 Green
    32926 &5 Teal
    32927 &6 Blue
    32928 &7 Violet
    32929 &8 Pink
    32930 &9 Grey
  32931 &Note...\tCtrl+Shift+D
  32932 N&ext Mark\tF2
  32933 Pre&vious Mark\tShift+F2
  -----
  57633 C&lear
  -----
  32813 &Properties...\tAlt+P
&View
  32800 &Options...
  -----
  59392 &Tool Bar
  59393 &Status Bar
  -----
  32804 Proc &View\tCtrl+F6
  32822 &Goto Source\tCtrl+G
  32825 Synchroni&ze\tAlt+S
  32847 Fi&lter...
  32850 Fit &Columns
  32968 Column &Menu
  32920 Colour &Rules...
  -----
  32902 Filter Te&xt\tCtrl+L
  32903 Filter &Back\tAlt+Left
  32904 Filter &Forward\tAlt+Right
  -----
  32934 Mar&ks and Notes\tCtrl+Shift+M
  -----
  32946 Time Colum&ns
    32940 &Delta
    32941 &Since
    32942 &Wall Time
  32943 Time Reference\tCtrl+T
  32944 Go to T&ime...\tCtrl+Shift+T
  32945 Go to Ro&w...\tCtrl+Shift+G
  -----
  32909 St&atistics...
  32960 Ov&erview\tCtrl+Shift+O
  -----
  32965 &Details\tCtrl+I
  32966 Details at t&he Right
  32967 Next Pane\tF6
  -----
  32980 &Profiles
    32981 S&tandard
    32982 Save &As...
    32983 &Manage...
&Window
  57648 &New Window
  57650 &Cascade
  57651 &Tile
  57649 &Arrange Icons
  -----
  32901 Ta&bs
  (windows)
&Help
  57667 Help Topics
  -----
  57664 &About Tessera...
)");
}

TEST(Menus, OfAMonitor) {
  EXPECT_EQ(Dump(IDR_MONITOR), R"(
&File
  32816 Trace &Monitor...\tAlt+M
  32807 Trace &Configuration...\tAlt+C
  57601 &Open\tCtrl+O
  57602 &Close\tCtrl+F4
  -----
  32823 Trace &Wizard...\tCtrl+W
  -----
  57603 &Save As\tCtrl+S
  32848 Capture Outpu&t...
  32810 &Export...
  -----
  57607 &Print...\tCtrl+P
  57609 Print Pre&view
  57606 P&rint Setup...
  -----
  57616 Recent File
  -----
  57665 E&xit\tAlt+F4
&Edit
  57634 &Copy\tCtrl+C
  32958 Copy Row&s As
    32951 &Text
    32952 Ta&bs
    32953 &CSV
    32954 &JSON
    32955 &Filter Text
    -----
    32950 As &Last Time
    32956 With &Headings
  -----
  57636 &Find...\tCtrl+F
  32781 Find Ne&xt\tF3
  32957 List &Hits\tCtrl+Shift+F
  -----
  32921 &Mark\tCtrl+D
  32935 Mark Colo&ur
    32922 &1 Red
    32923 &2 Orange
    32924 &3 Yellow
    32925 &4 Green
    32926 &5 Teal
    32927 &6 Blue
    32928 &7 Violet
    32929 &8 Pink
    32930 &9 Grey
  32931 &Note...\tCtrl+Shift+D
  32932 N&ext Mark\tF2
  32933 Pre&vious Mark\tShift+F2
  -----
  57633 C&lear
  -----
  32813 &Properties...\tAlt+P
&View
  32800 &Options...
  -----
  59392 &Tool Bar
  59393 &Status Bar
  -----
  32804 Proc &View\tCtrl+F6
  32822 &Goto Source\tCtrl+G
  32825 Synchroni&ze\tAlt-S
  32847 Fi&lter...
  32850 Fit &Columns
  32968 Column &Menu
  32920 Colour &Rules...
  32849 Pa&use
  -----
  32902 Filter Te&xt\tCtrl+L
  32903 Filter &Back\tAlt+Left
  32904 Filter &Forward\tAlt+Right
  -----
  32934 Mar&ks and Notes\tCtrl+Shift+M
  -----
  32946 Time Colum&ns
    32940 &Delta
    32941 &Since
    32942 &Wall Time
  32943 Time Reference\tCtrl+T
  32944 Go to T&ime...\tCtrl+Shift+T
  32945 Go to Ro&w...\tCtrl+Shift+G
  -----
  32909 St&atistics...
  32960 Ov&erview\tCtrl+Shift+O
  -----
  32965 &Details\tCtrl+I
  32966 Details at t&he Right
  32967 Next Pane\tF6
  -----
  32980 &Profiles
    32981 S&tandard
    32982 Save &As...
    32983 &Manage...
&Window
  57648 &New Window
  57650 &Cascade
  57651 &Tile
  57649 &Arrange Icons
  -----
  32901 Ta&bs
  (windows)
&Help
  57667 Help Topics
  -----
  57664 &About Tessera...
)");
}

TEST(Menus, OfAConfiguration) {
  EXPECT_EQ(Dump(IDR_CONFIG), R"(
&File
  32816 Trace &Monitor...\tAlt+M
  32807 Trace &Configuration...\tAlt+C
  57601 &Open\tCtrl+O
  57602 &Close\tCtrl+F4
  -----
  32823 Trace &Wizard...\tCtrl+W
  -----
  57603 &Save\tCtrl+S
  57604 Save &As...
  -----
  57607 &Print...\tCtrl+P
  57609 Print Pre&view
  57606 P&rint Setup...
  -----
  57616 Recent File
  -----
  57665 E&xit\tAlt+F4
&Edit
  57633 C&lear
&View
  32800 &Options...
  -----
  59392 &Tool Bar
  59393 &Status Bar
Co&nfig
  32811 &Add Application\tCtrl+A
  32812 &Delete Application\tDel
  32813 &Properties...\tAlt+P
&Window
  57650 &Cascade
  57651 &Tile
  57649 &Arrange Icons
  -----
  32901 Ta&bs
  (windows)
&Help
  57667 Help Topics
  -----
  57664 &About Tessera...
)");
}

TEST(Menus, OfASourceFile) {
  EXPECT_EQ(Dump(IDR_SOURCE), R"(
&File
  32816 Trace &Monitor...\tAlt+M
  32807 Trace &Configuration...\tAlt+C
  57601 &Open\tCtrl+O
  57602 &Close\tCtrl+F4
  -----
  32823 Trace &Wizard...\tCtrl+W
  -----
  57603 &Save As...\tCtrl+S
  -----
  57607 &Print...\tCtrl+P
  57609 Print Pre&view
  57606 P&rint Setup...
  -----
  57616 Recent File
  -----
  57665 E&xit\tAlt+F4
&Edit
  57634 &Copy\tCtrl+C
  -----
  57636 &Find...\tCtrl+F
&View
  32800 &Options...
  -----
  59392 &Tool Bar
  59393 &Status Bar
&Window
  57650 &Cascade
  57651 &Tile
  57649 &Arrange Icons
  -----
  32901 Ta&bs
  (windows)
&Help
  57667 Help Topics
  -----
  57664 &About Tessera...
)");
}

TEST(Menus, PopUpOfATraceWindow) {
  EXPECT_EQ(Dump(IDR_TRACE_POPUP), R"(
(popup)
  57636 &Find...\tCtrl+F
  32781 Find Ne&xt\tF3
  -----
  57633 C&lear
  -----
  32813 &Properties...\tAlt+P
  -----
  32804 Proc &View\tCtrl+F6
  32822 &Goto Source\tCtrl+G
  32825 Synchroni&ze\tAlt+S
  32847 Fi&lter...
)");
}

TEST(Menus, PopUpOfAConfiguration) {
  EXPECT_EQ(Dump(IDR_CONFIG_POPUP), R"(
(popup)
  32811 &Add Application\tCtrl+A
  32812 &Delete Application\tDel
  32813 &Properties...\tAlt+P
  -----
  57633 C&lear
)");
}

TEST(Menus, AnUnknownResourceHasNone) {
  EXPECT_TRUE(MenuOf(999).empty());
}

// With Alt these keys are accelerators: one that is a title's mnemonic too would do only one thing.
TEST(Menus, NoTitleTakesTheKeyOfAnAltAccelerator) {
  int titles = 0;
  for (const unsigned bar : {IDR_MAINFRAME, IDR_TRACEFILE, IDR_MONITOR, IDR_CONFIG, IDR_SOURCE}) {
    std::set<char> taken;
    for (const MenuPopup& popup : MenuOf(bar)) {
      const char mnemonic =
          static_cast<char>(std::toupper(popup.title.at(popup.title.find('&') + 1)));
      EXPECT_EQ(std::string("SMCP").find(mnemonic), std::string::npos) << popup.title;
      EXPECT_TRUE(taken.insert(mnemonic).second) << popup.title << " in " << bar;
      ++titles;
    }
  }
  EXPECT_EQ(titles, 24);
}

// The upper letter behind "&", 0 for none.
char LetterOf(const std::string& text) {
  for (std::size_t i = text.find('&'); i != text.npos; i = text.find('&', i + 2))
    if (text.at(i + 1) != '&') return static_cast<char>(std::toupper(text[i + 1]));
  return 0;
}

// "57602 C": the items whose letter one before them has.
std::set<std::string> RepeatedLetters(const std::vector<MenuItem>& items,
                                      std::set<unsigned>& without) {
  std::set<std::string> repeated;
  std::set<char> taken;
  for (const MenuItem& item : items) {
    repeated.merge(RepeatedLetters(item.items, without));
    const char letter = LetterOf(item.text);
    if (letter == 0 && item.id != 0) without.insert(item.id);
    if (letter != 0 && !taken.insert(letter).second)
      repeated.insert(std::to_string(item.id) + " " + letter);
  }
  return repeated;
}

TEST(Menus, NoTwoItemsOfAMenuHaveTheSameLetter) {
  std::set<unsigned> without;
  std::set<std::string> repeated;
  for (const unsigned resource : {IDR_MAINFRAME, IDR_TRACEFILE, IDR_MONITOR, IDR_CONFIG, IDR_SOURCE,
                                  IDR_CONFIG_POPUP, IDR_TRACE_POPUP})
    for (const MenuPopup& popup : MenuOf(resource))
      repeated.merge(RepeatedLetters(popup.items, without));
  // Kept: Close beside Trace Configuration, and Filter beside Clear in the pop-up, have had these
  // letters in all versions.
  EXPECT_EQ(repeated, (std::set<std::string>{"57602 C", "32847 L"}));
  // The View menu has more items than there are letters in their texts: two with a key go without.
  EXPECT_EQ(without, (std::set<unsigned>{ID_VIEW_TIMEREFERENCE, ID_VIEW_NEXTAREA, ID_FILE_MRU_FILE1,
                                         ID_HELP_INDEX}));
}

TEST(Menus, WhatFollowsInThePopUpOfATraceWindowHasLettersOfItsOwn) {
  std::vector<MenuItem> items = MenuOf(IDR_TRACE_POPUP).front().items;
  for (const char* step : {"&Only This", "&Hide This", "Only This Th&read", "Only &Around This"})
    items.push_back({1, step});
  for (const unsigned id : {ID_EDIT_COPYROWSAS, ID_EDIT_MARK, ID_EDIT_MARKCOLOUR, ID_EDIT_NOTE})
    items.push_back(ItemIn(IDR_TRACEFILE, id));
  std::set<unsigned> without;
  EXPECT_EQ(RepeatedLetters(items, without), (std::set<std::string>{"32847 L"}));
}

TEST(Menus, EveryCommandWithATextHasItsPromptAndToolTip) {
  EXPECT_EQ(Prompt(32816), "Open a new trace monitor window | New Monitor");
  EXPECT_EQ(Prompt(32807), "Create a new window for configuring traces | New Config");
  EXPECT_EQ(Prompt(57601), "Open an existing file | Open");
  EXPECT_EQ(Prompt(57602), "Close the active document | Close");
  EXPECT_EQ(Prompt(32823), "Start the Wizard | Wizard");
  EXPECT_EQ(Prompt(32809), "Save a copy of the current trace list in a different file | Save Copy");
  EXPECT_EQ(Prompt(57603), "Save the active document | Save");
  EXPECT_EQ(Prompt(57604), "Save the active document with a new name | Save As");
  EXPECT_EQ(Prompt(32810), "Export traces to a text file. | Export");
  EXPECT_EQ(Prompt(57607), "Print the active document | Print");
  EXPECT_EQ(Prompt(57609), "Display full pages | Print Preview");
  EXPECT_EQ(Prompt(57606), "Change the printer and printing options | Print Setup");
  EXPECT_EQ(Prompt(57665), "Quit the application; prompts to save documents | Exit");
  EXPECT_EQ(Prompt(57634), "Copy the selection and put it on the Clipboard | Copy");
  EXPECT_EQ(Prompt(57636), "Find the specified text | Find");
  EXPECT_EQ(Prompt(32781), "Find the next match | Next");
  EXPECT_EQ(Prompt(57633), "Erase everything | Erase All");
  EXPECT_EQ(Prompt(32800), "Change Option Settings | Options");
  EXPECT_EQ(Prompt(32811), "Add a new application to configuration list | Add App");
  EXPECT_EQ(Prompt(32812), "Remove the selected application from the configuration list | Del App");
  EXPECT_EQ(Prompt(32813), "Bring up properties dialog for the selected application | Properties");
  EXPECT_EQ(Prompt(59392), "Show or hide the tool bar | Toggle Tool Bar");
  EXPECT_EQ(Prompt(59393), "Show or hide the status bar | Toggle Status Bar");
  EXPECT_EQ(Prompt(32804),
            "Toggle between procedure tree view and trace list view | Procedure View");
  EXPECT_EQ(Prompt(32822), "View source file line that issued the trace | Source");
  EXPECT_EQ(Prompt(32825), "Synchronize current trace in all views | Synchronize");
  EXPECT_EQ(Prompt(32849), "Pause display of output | Pause");
  EXPECT_EQ(Prompt(32850), "Make each column as wide as what it shows | Fit Columns");
  EXPECT_EQ(Prompt(32920), "Choose the colours of rows by filter texts | Colour Rules");
  EXPECT_EQ(Prompt(57648), "Open another window for the active document | New Window");
  EXPECT_EQ(Prompt(57650), "Arrange windows so they overlap | Cascade Windows");
  EXPECT_EQ(Prompt(57649), "Arrange icons at the bottom of the window | Arrange Icons");
  EXPECT_EQ(Prompt(57667), "List Help topics | Help Topics");
}

TEST(Menus, APromptWithoutASecondHalfHasNoToolTip) {
  EXPECT_EQ(Prompt(32848), "Save trace output to a file as it comes in | ");
}

TEST(Menus, FilterTileAndAboutHaveNoPrompt) {
  for (const unsigned id : {32847U, 57651U, 57664U, 57616U, 1U}) EXPECT_EQ(Prompt(id), " | ") << id;
}

TEST(ToolBar, ItsButtonsStandInOrder) {
  EXPECT_EQ(ToolBarButtons(), (std::vector<unsigned>{57633, 57601, 57603, 0, 32800, 0, 32804, 32825,
                                                     32849, 0, 57634, 57636}));
}

TEST(ToolBar, EveryButtonHasAToolTip) {
  for (const unsigned id : ToolBarButtons()) EXPECT_TRUE(id == 0 || !ToolTipOf(id).empty()) << id;
}

TEST(Accelerators, AllKeysAndTheirCommands) {
  std::string keys = "\n";
  for (const Accelerator& accelerator : Accelerators())
    keys += std::string(accelerator.key) + " " + std::to_string(accelerator.id) + "\n";
  EXPECT_EQ(keys, R"(
Ctrl+A 32811
Ctrl+C 57634
Ctrl+Insert 57634
Alt+C 32807
Ctrl+F 57636
F3 32781
Ctrl+Shift+C 32950
Ctrl+Shift+F 32957
Ctrl+G 32822
Alt+M 32816
Ctrl+O 57601
Ctrl+P 57607
Alt+P 32813
Ctrl+S 57603
Alt+S 32825
Ctrl+F6 32804
Ctrl+W 32823
F1 57670
Ctrl+L 32902
Ctrl+Shift+O 32960
Alt+Left 32903
Alt+Right 32904
Ctrl+T 32943
Ctrl+Shift+T 32944
Ctrl+Shift+G 32945
Ctrl+I 32965
F6 32967
Ctrl+D 32921
Ctrl+Shift+D 32931
F2 32932
Shift+F2 32933
Ctrl+Shift+M 32934
Ctrl+Alt+1 32922
Ctrl+Alt+2 32923
Ctrl+Alt+3 32924
Ctrl+Alt+4 32925
Ctrl+Alt+5 32926
Ctrl+Alt+6 32927
Ctrl+Alt+7 32928
Ctrl+Alt+8 32929
Ctrl+Alt+9 32930
)");
}

// The menu text of a trace file's save shows the key, and the key sends the document's save: in a
// trace file both are the same operation.
TEST(Accelerators, CtrlSSendsSaveAlsoWhereTheMenuShowsItAtSaveCopy) {
  int keys = 0;
  for (const Accelerator& accelerator : Accelerators()) {
    if (std::string(accelerator.key) != "Ctrl+S") continue;
    ++keys;
    EXPECT_EQ(accelerator.id, static_cast<unsigned>(ID_FILE_SAVE));
  }
  EXPECT_EQ(keys, 1);
}

TEST(StatusBar, ItsPanesStandInOrder) {
  std::string panes = "\n";
  for (const StatusIndicator& pane : StatusIndicators())
    panes += std::to_string(pane.id) + " \"" + pane.text + "\"\n";
  EXPECT_EQ(panes, R"(
0 ""
59145 "UTC+00:00"
59137 "CAP"
59138 "NUM"
59139 "SCRL"
59144 "FILTERED"
59143 "555555"
)");
}

}  // namespace
