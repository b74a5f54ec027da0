#include "quorvel/blips_group.h"

namespace quorvel {

const char* blipsGroupName(BlipsGroup group) {
  return group == BlipsGroup::pathfinder ? "pathfinder" : "behavioural";
}

}  // namespace quorvel
