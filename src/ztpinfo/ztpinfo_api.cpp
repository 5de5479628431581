#include "ztpinfo/ztpinfo.h"
