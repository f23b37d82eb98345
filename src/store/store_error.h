// How a failing step inside a store operation leaves it: the status is thrown and the
// operation catches it at its boundary.
#pragma once

#include <new>

#include "platform/file.h"
#include "store/db_status.h"

namespace qm {

struct StoreError {
  DBStatus status;
};

[[noreturn]] inline void Fail(DBStatus status) { throw StoreError{status}; }
// Throws a status that is not kOk.
inline void Check(DBStatus status) {
  if (status != DBStatus::kOk) Fail(status);
}

// Runs `work`; a thrown status becomes the answer, no memory 1005, a file failure 1011.
template <class Work>
DBStatus RunGuarded(Work&& work) {
  try {
    work();
    return DBStatus::kOk;
  } catch (const StoreError& e) {
    return e.status;
  } catch (const std::bad_alloc&) {
    return DBStatus::kNoMemory;
  } catch (const platform::FileError&) {
    return DBStatus::kIoError;
  }
}

}  // namespace qm
