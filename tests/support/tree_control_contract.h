// The contract of the tree control: run for the fake and for the control on the screen.
//
// To run it, write an adapter ("harness") and instantiate the three suites:
//
//   struct MyHarness {
//     explicit MyHarness(TreeControlOwner& owner);  // makes an empty tree
//     TreeControl& Tree();
//     void ShowRows(int rows);                  // sizes it so that so many rows are fully visible
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, TreeItemContract, MyHarness);
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, TreeRowContract, MyHarness);
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, TreeLookContract, MyHarness);
//
// The harness's constructor makes what the tree needs (an application object). The owner outlives
// the harness.
#pragma once

#include "support/tree_item_contract.h"
#include "support/tree_look_contract.h"
#include "support/tree_row_contract.h"
