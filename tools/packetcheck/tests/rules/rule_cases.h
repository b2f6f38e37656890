// The cases of the rules, told as changes of a packet in which nothing is wrong (packets/good).
//
//   rule NAME          the cases that follow are about this rule
//   has CHANGE         a packet that has what the rule finds
//   not CHANGE         a near miss
//   good NAME          a correct packet in another style: nothing more may be found
//   with CHANGE        a change of it
//   and CHANGE         a further change of the same packet
//   and none-of RULE   the case is only about the rule when this other one is not found
//
// A change is one of
//   FILE | FROM | TO   every FROM in the file becomes TO; FROM must be there
//   FILE = TEXT        makes the file
//   FILE copy OTHER, FILE delete, FILE encode ENCODING, FILE lower, FILE upper
// where FILE is a path in the packet, or "modem" for the modem's description. In texts \n ends a
// line, \\n is a backslash at a line's end, \0, \xNN and \uNNNN are characters, {text*9} is a text
// nine times.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace cases {

struct RuleCase {
    std::string Rule; // empty for a correct packet
    std::string Name; // as it stands in the file, with its line
    bool Has = false;
    // The other rule of "none-of"; empty without one.
    std::string NoneOf;
    std::vector<std::string> Changes;
};

std::vector<RuleCase> ReadCases(const std::string& path);

// Files by their path in the packet; texts are UTF-8 with LF line ends until they are written.
using Files = std::map<std::string, std::string>;

// The packet after the changes; throws std::runtime_error at one that does not fit.
Files Changed(const Files& packet, const std::vector<std::string>& changes);

} // namespace cases
