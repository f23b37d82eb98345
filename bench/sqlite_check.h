// How a benchmark's setup gives up on a failed SQLite call.
#pragma once

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>

namespace qm::bench {

inline void CheckSqlite(int rc, sqlite3* db, const char* what) {
  if (rc == SQLITE_OK || rc == SQLITE_DONE || rc == SQLITE_ROW) return;
  std::fprintf(stderr, "%s: %s\n", what, sqlite3_errmsg(db));
  std::exit(1);
}

}  // namespace qm::bench
