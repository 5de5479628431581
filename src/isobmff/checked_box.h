#pragma once

#include <utility>

#include "bits/place.h"

namespace quorlin {

// A box whose contents are checked for every segment.
struct CheckedBox {
    Place place;
    bool checked = false;  // for the segment that holds it, or one after it
};

// The place of a check of the box: as found again from the second time on.
inline Place place_of_check(CheckedBox& box) {
    Place place = box.place;
    place.repeated = std::exchange(box.checked, true);
    return place;
}

}  // namespace quorlin
