#include "driver/command_line.h"
