#include "playlist/codecs.h"
