// Style and colours of the program.
#pragma once

// Switches the whole program to the Fusion style, dark (for systems that do not report such
// colours) or light.
void UseFusion(bool dark);

// Uses the system's style and colours; Fusion is replaced by the program's own variant.
void UseSystemStyle();
