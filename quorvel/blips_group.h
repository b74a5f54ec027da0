#pragma once

namespace quorvel {

enum class BlipsGroup { pathfinder, behavioural };

// "pathfinder", "behavioural".
const char* blipsGroupName(BlipsGroup group);

}  // namespace quorvel
