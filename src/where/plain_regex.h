// What is known of a regular expression by its text alone.
//
// Shape    Only plain expressions are understood: ASCII letters, signs and sets, groups,
//          repetitions, "|", "^", "$" and ".*". Of all others nothing is said.
// Errors   None. Threads  Pure.
#pragma once

#include <string>
#include <string_view>

// Does the expression find the same by characters and by bytes, in every text? No: it may not.
bool MeansTheSameByBytes(std::string_view expression);
// Does it find something in every text in whose beginning it finds something? No: it may not.
bool SeesNoEnd(std::string_view expression);
// What every text begins with in which a plain expression with "^" finds something. Empty: it is
// not known.
std::string BeginningOf(std::string_view expression);
