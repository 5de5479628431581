#include "ac4/ac4_dsi.h"
