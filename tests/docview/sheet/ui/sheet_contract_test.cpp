#include "sheet_face_rig.h"
#include "support/qt_test_main.h"
#include "support/wizard_contract.h"

INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, SheetContract, QtSheetRig<TabbedSheetFace>);
INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, WizardContract, QtSheetRig<WizardFace>);
