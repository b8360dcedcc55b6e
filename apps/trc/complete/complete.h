// trc complete: what the completions of the shells ask. It is in no help, because no user types it.
//
//   trc complete -- WORD...         the words behind "trc" up to the cursor; the last one may be ""
//   trc complete --bash LINE BREAKS the line up to the cursor, and COMP_WORDBREAKS
//
// Each line of the answer is a word for the place of the last one, as it is meant: the shell quotes
// it. With --bash it is quoted, and the part that bash leaves in the line does not come again.
//
// Time     After kCompleteLimitMs, or as many milliseconds as TRC_COMPLETION_MS says, it ends
//          without an answer, so that a service that hangs or a slow disk do not hold the shell up.
// Errors   No answer. The exit status is always 0.
#pragma once

constexpr int kCompleteLimitMs = 250, kCompleteLimitMaxMs = 60'000;

bool IsCompletion(int argc, const char* const* argv);
int RunCompletion(int argc, const char* const* argv);
