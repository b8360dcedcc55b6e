// The fixed texts of the wizard's pages, each paragraph a text.
//
// Kept: "flexibiility" and "more complicated that" stand as users of the program know them. They
// are not corrected.
#pragma once

#include <array>

struct WizardTexts {
  static constexpr std::array kWelcome = {
      "Welcome to the Trace Wizard.  It will guide you through the process of configuring the "
      "applications you want to trace and monitoring the trace output from these applications.",
      "Tessera supports a great deal of flexibiility, especially with regard to supporting remote "
      "nodes, setting different levels of tracing in multiple applications simultaneously, and "
      "other "
      "advanced features.",
      "This Wizard does NOT support everything that Tessera can do.  Rather, it presents a simple "
      "interface for performing some of the most common tasks.",
      "If you want to use some of the more advanced features, you will need to do this in a more "
      "manual fashion using the standard menus and context-menus found in Tessera."};
  static constexpr char kAutoStart[] = "Auto-start Wizard when Tessera is run";

  static constexpr char kMode[] =
      "The Trace Wizard can help you perform a variety of common tasks.  Please select the type of "
      "task that you want to perform:";
  static constexpr std::array kTasks = {
      "&New setup for real-time tracing",
      "Configure local applications by &loading a saved configuration",
      "Load a file containing previously saved &trace output"};

  static constexpr std::array kNetwork = {
      "Tessera has the capability of configuring tracing for applications running on remote "
      "computers.  The trace output from a remote application can be sent to a trace server "
      "running "
      "on any computer on the network.",
      "Tessera also has the capability of monitoring the trace messages sent to a trace server on "
      "the local machine or any other machine on the network.",
      "Configuration of remote configuration and monitoring is more complicated that just "
      "configuring and monitoring tracing on the local machine.  Please indicate what type of "
      "setup "
      "you would like help with:"};
  static constexpr std::array kNetworkModes = {"&Local setup only", "Local and &Remote"};

  static constexpr char kMachines[] =
      "Please select the &machines that you want to configure for tracing:";
  static constexpr char kIdentical[] = "Configure all machines the &same";
  static constexpr char kAdd[] = "&Add";
  static constexpr char kDelete[] = "&Delete";

  static constexpr char kApplications[] =
      "Please select the &applications that you want to configure for tracing.  The list initially "
      "contains the list of applications currently running that are trace enabled:";
  static constexpr char kLoad[] = "&Load...";

  static constexpr char kTraces[] =
      "Select the trace types (by component and category name) that you want to configure.  Then "
      "use "
      "the buttons on the right to select the types of traces you want to enable:";

  static constexpr char kNotRead[] = "The traces of this application have not been read.";

  static constexpr std::array kFinish = {
      "You have now defined the tracing setup you want to use.  Select the \"Finish\" button to "
      "configure tracing on the selected systems.",
      "By default, the trace output will be sent to this computer, and the Wizard will make sure "
      "that a Monitor window is set up to view traces sent to this machine.",
      "A separate Configuration window will be brought up for each machine that you have "
      "configured "
      "for tracing.  These configurations can be changed independently.",
      "If you close a Configuration window, then your configuration settings for each configured "
      "application on that machine will only remain in effect as long as an instance of that "
      "application is running on that machine."};
};
