// What a person is told by several parts of the configuration, in the same words.
#pragma once

struct ConfigTexts {
  static constexpr char kNoConnection[] = "Error trying to connect to configuration server.";
  // The machine's name follows.
  static constexpr char kNoConnectionOn[] = "Error trying to connect to configuration server on ";
  static constexpr char kNoLocalConnection[] =
      "Error trying to connect to local configuration server.";
  static constexpr char kDuplicateMachine[] = "Duplicate entry!  Machine not added.";
  static constexpr char kNotOpened[] = "Error opening file.";
  static constexpr char kInvalid[] = "Invalid format.";
};
