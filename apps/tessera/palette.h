// Dark colours for systems that do not tell theirs.
#pragma once

// Switches the whole program to the Fusion style, dark or light.
void UseFusion(bool dark);
