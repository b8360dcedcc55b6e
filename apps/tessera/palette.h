// Style and colours of the program.
#pragma once

// Switches the whole program to the Fusion style, dark (for systems that do not tell of such
// colours) or light.
void UseFusion(bool dark);

// Style and colours as the system has them; Fusion becomes the program's own form of it.
void UseSystemStyle();
