// A running conversion in this process. The end of the process from outside gives up all of them.
//
// Shape    One count and one flag for the process, because a signal or the end of a session ends
//          all of it. A process that ends by exit (because its display is lost) does not wait for
//          its threads. While such an object lives, exit waits at most three seconds for its end.
// Threads  Any.
#pragma once

class ConversionUnderWay {
 public:
  ConversionUnderWay();
  ~ConversionUnderWay();
  ConversionUnderWay(const ConversionUnderWay&) = delete;
  ConversionUnderWay& operator=(const ConversionUnderWay&) = delete;

  // The program is being ended by a signal or with its session. No user has cancelled anything, so
  // every conversion leaves its old file as it is. This cannot be undone.
  static void GiveUpAll();
  static bool AllGivenUp();
};
