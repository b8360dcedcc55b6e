// The lines of a trace configuration file, .tcf: what they say and how they are read.
//
// Shape    Text. The first line is kTcfHeader. Then a group of lines for each application:
//            APP: "orders"
//            SINK: File "/var/log/orders.trc" "flush=1;maxfiles=10;maxsize=5;"
//            TRACE: "Net" "Connect" Info Warn
//          In a quoted field each backslash is written twice, and a quote stands as it is. So a
//          field ends at a quote that blanks and another field's quote follow, and the last field
//          of a line ends at the line's last quote. Bytes of names are not converted. Readers pass
//          over blank lines, a byte order mark in line 1 and the CR of a line end. Fields are
//          separated by any number of blanks and tabs, and these may end a line.
// Errors   False: the line is bad, and `why`, if it is not null, gets the reason for a person. Only
//          _trc_GetCfgLineType tells the end of the file: false with the stream's end-of-file
//          state. A bad last line that has no line end leaves the stream without that state.
// Threads  Touches only its arguments.
#pragma once

#include <cstddef>
#include <istream>
#include <string>

inline constexpr char kTcfHeader[] = "TCF Version 3.2";
inline constexpr std::size_t kLongestTcfLineBytes = 1 << 20;  // longer ones are bad

enum TcfLineType : int { CfgLineApp = 0, CfgLineSink = 1, CfgLineTrace = 2 };

// The first line without blanks at its end; the caller compares it with kTcfHeader.
bool _trc_GetCfgLineVersion(std::istream& in, std::string* version, std::string* why = nullptr);
// Goes to the next line that is not blank and reads its keyword. The function of that type then
// reads the rest of the line.
bool _trc_GetCfgLineType(std::istream& in, int* type, std::string* why = nullptr);
bool _trc_GetCfgLineAppName(std::istream& in, std::string* name, std::string* why = nullptr);
// `type` is one of trc_SinkTypes_e.
bool _trc_GetCfgLineSink(std::istream& in, unsigned char* type, std::string* name,
                         std::string* options, std::string* why = nullptr);
// `settings` is a settings word, 0 for a line without a flag word.
bool _trc_GetCfgLineTrace(std::istream& in, std::string* component, std::string* category,
                          unsigned short* settings, std::string* why = nullptr);
