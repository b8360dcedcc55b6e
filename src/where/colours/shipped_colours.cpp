#include "where/colours/shipped_colours.h"

namespace {

struct Shipped {
  const char *name, *where;
  Colour lightInk, lightGround, darkInk, darkGround;
};

constexpr Colour kWhite{0xff, 0xff, 0xff};
constexpr Colour kPurple{0x87, 0x00, 0xaf};

// The rules of more weight come first.
constexpr Shipped kShipped[] = {
    {"Lost traces", "component == Quor and category == Loss", kWhite, kPurple, kWhite, kPurple},
    {"Errors",
     "severity == error",
     {0x87, 0x00, 0x00},
     {0xff, 0xd7, 0xd7},
     {0xff, 0xd0, 0xd0},
     {0x5f, 0x10, 0x10}},
    {"Warnings",
     "severity == warn",
     {0x5f, 0x37, 0x00},
     {0xff, 0xee, 0xbb},
     {0xff, 0xe4, 0xa0},
     {0x4a, 0x35, 0x00}},
    {"Failures in words",
     R"(text matches "(?i)\b(fail|failed|failure|exception|fatal|timeout|timed out|refused|denied)\b")",
     {0x87, 0x00, 0x5f},
     {0xff, 0xe4, 0xf4},
     {0xff, 0xc8, 0xea},
     {0x55, 0x0f, 0x40}},
    {"After a pause",
     "delta > 1s",
     {0x00, 0x3f, 0x6f},
     {0xd7, 0xee, 0xff},
     {0xbf, 0xe4, 0xff},
     {0x0d, 0x33, 0x55}},
    {"With a call stack",
     "stack",
     {0x00, 0x5f, 0x00},
     {0xe0, 0xf5, 0xe0},
     {0xc4, 0xf0, 0xc4},
     {0x12, 0x3f, 0x18}},
    {"For developers",
     "developer",
     {0x4a, 0x3a, 0x8a},
     {0xee, 0xea, 0xff},
     {0xd8, 0xd0, 0xff},
     {0x30, 0x2a, 0x55}},
    {"Verbose",
     "verbose",
     {0x5a, 0x5a, 0x5a},
     {0xf4, 0xf4, 0xf4},
     {0xb0, 0xb0, 0xb0},
     {0x26, 0x26, 0x26}},
};

}  // namespace

ColourRules ShippedColours(ColourGround ground) {
  const bool light = ground == ColourGround::Light;
  ColourRules rules;
  for (const Shipped& one : kShipped)
    rules.push_back({one.name, one.where, light ? one.lightInk : one.darkInk,
                     light ? one.lightGround : one.darkGround});
  return rules;
}
