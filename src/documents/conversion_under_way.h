// A conversion under way in this process, and the process's end from outside, which gives up all of
// them.
//
// Shape    One count and one fact for the process, because a signal or the end of a session ends
//          all of it. A process that ends by exit (its display has gone) does not wait for its
//          threads: while such an object lives, exit waits at most three seconds for it to go.
// Threads  Any.
#pragma once

class ConversionUnderWay {
 public:
  ConversionUnderWay();
  ~ConversionUnderWay();
  ConversionUnderWay(const ConversionUnderWay&) = delete;
  ConversionUnderWay& operator=(const ConversionUnderWay&) = delete;

  // The program is being ended by a signal or with its session: no person has cancelled anything,
  // and every conversion leaves its old file as it is. There is no way back.
  static void GiveUpAll();
  static bool AllGivenUp();
};
