#pragma once

namespace qvk::emulator {

class Database;

// Creates the emulator's tables when they are missing (a --db file keeps them
// from one run to the next).
void createSchema(Database& db);

}  // namespace qvk::emulator
