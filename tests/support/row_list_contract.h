// The contract of the row list: run for the fake and for the control on the screen.
//
// To run it, write an adapter ("rig") and instantiate the three suites:
//
//   struct MyRig {
//     explicit MyRig(RowListOwner& owner);   // makes an empty list, at least 300 pixels wide
//     RowList& List();
//     void ShowRows(int rows);               // sizes the list so that CountPerPage() is `rows`
//     void Hide();                           // as when a frame shows another view
//     void ShowAgain(int rows);              // in that size
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, RowStateContract, MyRig);
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, RowScrollContract, MyRig);
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, RowColumnContract, MyRig);
//
// The rig's constructor makes what the list needs (an application object). The owner outlives the
// rig.
#pragma once

#include "support/row_column_contract.h"
#include "support/row_scroll_contract.h"
#include "support/row_state_contract.h"
