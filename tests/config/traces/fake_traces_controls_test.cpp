// The fake keeps the contract of the panel on the screen.
#include "support/fake_traces_controls.h"

#include "support/traces_controls_contract.h"

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TracesControlsContract, FakeTracesControls);
