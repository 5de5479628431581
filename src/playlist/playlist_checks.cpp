#include "playlist/playlist_checks.h"
