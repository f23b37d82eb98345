// How a benchmark's setup gives up: with a line on what failed, by exit rather than abort,
// so that the temporary folder of the run goes too.
#pragma once

#include <cstdio>
#include <cstdlib>

#include "store/db_status.h"

namespace qm::bench {

inline void Check(DBStatus status, const char* what) {
  if (status == DBStatus::kOk) return;
  std::fprintf(stderr, "%s: %u %s\n", what, Code(status), StatusSentence(status).c_str());
  std::exit(1);
}

}  // namespace qm::bench
