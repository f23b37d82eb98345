// The remembered login of quillmark-cli.
#include "cli_host.h"

#include "session/db_doc.h"

namespace qm::cli {

void CliHost::ProjectLoaded(CDBDoc& doc) {
  // A script's opening is not the person's last project: only a login to be remembered
  // names the file it belongs to.
  if (remember_) preferences_.SetLastOpenFile(doc.path());
}

void CliHost::RememberLogin(const ui::LoginEntry& login) {
  if (!remember_) return;
  preferences_.autoLogin = 1;
  preferences_.SetLastUser(login.name, login.password);
  preferences_.Save();
}

}  // namespace qm::cli
