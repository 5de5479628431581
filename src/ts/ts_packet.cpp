#include "ts/ts_packet.h"
