#include "ac4/ac4_toc.h"
