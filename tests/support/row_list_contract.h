// The contract of the row list: run for the fake and for the control on the screen.
//
// To run it, write an adapter ("harness") and instantiate the four suites:
//
//   struct MyHarness {
//     explicit MyHarness(RowListOwner& owner);   // makes an empty list, at least 300 pixels wide
//     RowList& List();
//     void ShowRows(int rows);               // sizes the list so that CountPerPage() is `rows`
//     void Hide();                           // as when a frame shows another view
//     void ShowAgain(int rows);              // in that size
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, RowStateContract, MyHarness);
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, RowScrollContract, MyHarness);
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, RowColumnContract, MyHarness);
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, RowLookContract, MyHarness);
//
// The harness's constructor makes what the list needs (an application object). The owner outlives
// the harness.
#pragma once

#include "support/row_column_contract.h"
#include "support/row_look_contract.h"
#include "support/row_scroll_contract.h"
#include "support/row_state_contract.h"
