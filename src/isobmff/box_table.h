#pragma once

#include <span>

#include "isobmff/box_walk.h"

namespace quorlin {

// All boxes that are read, walked or knowingly passed over. The first row of a type holds for it.
std::span<const BoxType> box_table();

}  // namespace quorlin
