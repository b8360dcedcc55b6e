#include "support/sheet_contract.h"
#include "sheet_face_harness.h"
#include "support/qt_test_main.h"
#include "support/wizard_contract.h"

INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, SheetContract, QtSheetHarness<TabbedSheetFace>);
INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, WizardContract, QtSheetHarness<WizardFace>);
