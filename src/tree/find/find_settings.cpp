#include "tree/find/find_settings.h"

FindSettings_t FindSettings;
