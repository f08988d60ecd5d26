// Labels and screens that lie on both sides of every label rule: the words of real clients, near
// misses of them, shortcuts, apostrophes, capitals and every kind of white space.
#pragma once

#include <string>

#include "oracle/draw.h"
#include "oracle/naive_labels.h"

namespace callmonitor::oracle {

// A button's text; about every second is the plain wording of a client.
[[nodiscard]] std::string anyControl(Draw& draw);

// A sentence that a client shows.
[[nodiscard]] std::string anyNotice(Draw& draw);

// Any label at all: a control, a notice, a tile, a container's name, or words thrown together.
[[nodiscard]] std::string anyLabel(Draw& draw);

[[nodiscard]] std::string anyProvider(Draw& draw);

// Controls and notices of one window, of every kind of screen and of mixtures that no client shows.
[[nodiscard]] Screen anyScreen(Draw& draw);

}  // namespace callmonitor::oracle
