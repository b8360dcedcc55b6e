// The fake window of a property sheet keeps the contract of the one on the screen.
#include "fake_sheet_harness.h"
#include "support/sheet_contract.h"
#include "support/wizard_contract.h"

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, SheetContract, FakeSheetHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WizardContract, FakeSheetHarness);
