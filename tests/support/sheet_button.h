// What the user presses in the window of a property sheet or a wizard.
#pragma once

enum class SheetButton { Ok, Cancel, Apply, Back, Next, Finish };
