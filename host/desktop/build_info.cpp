#include "host/desktop/build_info.h"

#include <QStringList>

namespace torvell {

QString BuildVersion() { return QStringLiteral(TORVELL_VERSION); }

QString BuildDescription() {
  QStringList parts;
  const QString revision = QStringLiteral(TORVELL_REVISION);
  if (!revision.isEmpty()) parts << QStringLiteral("build %1").arg(revision);
  parts << QStringLiteral(TORVELL_BUILD_KIND) << QStringLiteral("compiler %1").arg(__VERSION__)
        << QStringLiteral("Qt %1").arg(QString::fromLatin1(qVersion()));
  return parts.join(QStringLiteral(", "));
}

}  // namespace torvell
