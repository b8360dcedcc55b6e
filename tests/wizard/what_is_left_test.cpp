#include "wizard/what_is_left.h"

#include <gtest/gtest.h>

TEST(WhatIsLeft, NamesEachMachineWithItsReason) {
  const LeftMachine db{"db", "no trace service there"}, web{"web", "cancelled"};
  EXPECT_EQ(WhatIsLeft({db}, 1000, false), "Cannot configure db: no trace service there");
  EXPECT_EQ(WhatIsLeft({db, db}, 1000, false),
            "2 of 1,000 machines are not wholly configured: db (no trace service there), db (no "
            "trace service there)");
  EXPECT_EQ(WhatIsLeft({web}, 2, true),
            "1 of 2 machines is not wholly configured: web (cancelled)");
  EXPECT_EQ(WhatIsLeft({web}, 1, true), "1 of 1 machine is not wholly configured: web (cancelled)");
}
