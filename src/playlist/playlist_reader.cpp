#include "playlist/playlist_reader.h"
