#include "wizard/wizard_texts.h"

#include <gtest/gtest.h>

#include <string>

namespace {

template <class Texts>
std::string Lines(const Texts& texts) {
  std::string lines;
  for (const char* text : texts) lines += std::string(text) + "\n";
  return lines;
}

}  // namespace

// The texts as users know them, two misspellings included.
TEST(WizardTexts, OfTheFirstPagesAreWordForWord) {
  EXPECT_EQ(
      Lines(WizardTexts::kWelcome),
      R"(Welcome to the Trace Wizard.  It will guide you through the process of configuring the applications you want to trace and monitoring the trace output from these applications.
Tessera supports a great deal of flexibiility, especially with regard to supporting remote nodes, setting different levels of tracing in multiple applications simultaneously, and other advanced features.
This Wizard does NOT support everything that Tessera can do.  Rather, it presents a simple interface for performing some of the most common tasks.
If you want to use some of the more advanced features, you will need to do this in a more manual fashion using the standard menus and context-menus found in Tessera.
)");
  EXPECT_STREQ(WizardTexts::kAutoStart, "Auto-start Wizard when Tessera is run");
  EXPECT_STREQ(
      WizardTexts::kMode,
      R"(The Trace Wizard can help you perform a variety of common tasks.  Please select the type of task that you want to perform:)");
  EXPECT_EQ(Lines(WizardTexts::kTasks), R"(&New setup for real-time tracing
Configure local applications by &loading a saved configuration
Load a file containing previously saved &trace output
)");
}

TEST(WizardTexts, OfTheMachinesAreWordForWord) {
  EXPECT_EQ(
      Lines(WizardTexts::kNetwork),
      R"(Tessera has the capability of configuring tracing for applications running on remote computers.  The trace output from a remote application can be sent to a trace server running on any computer on the network.
Tessera also has the capability of monitoring the trace messages sent to a trace server on the local machine or any other machine on the network.
Configuration of remote configuration and monitoring is more complicated that just configuring and monitoring tracing on the local machine.  Please indicate what type of setup you would like help with:
)");
  EXPECT_EQ(Lines(WizardTexts::kNetworkModes), "&Local setup only\nLocal and &Remote\n");
  EXPECT_STREQ(WizardTexts::kMachines,
               R"(Please select the &machines that you want to configure for tracing:)");
  EXPECT_STREQ(WizardTexts::kIdentical, "Configure all machines the &same");
  EXPECT_STREQ(WizardTexts::kAdd, "&Add");
  EXPECT_STREQ(WizardTexts::kDelete, "&Delete");
}

TEST(WizardTexts, OfTheLastPageAreWordForWord) {
  EXPECT_EQ(
      Lines(WizardTexts::kFinish),
      R"(You have now defined the tracing setup you want to use.  Select the "Finish" button to configure tracing on the selected systems.
By default, the trace output will be sent to this computer, and the Wizard will make sure that a Monitor window is set up to view traces sent to this machine.
A separate Configuration window will be brought up for each machine that you have configured for tracing.  These configurations can be changed independently.
If you close a Configuration window, then your configuration settings for each configured application on that machine will only remain in effect as long as an instance of that application is running on that machine.
)");
}
