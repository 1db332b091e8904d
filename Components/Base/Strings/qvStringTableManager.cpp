#include "Base/Strings/qvStringTableManager.h"

#include "Base/OS/qvOSFilename.h"
#include "Base/Strings/Internal/CatalogReader.h"
#include "Base/Strings/qvStringTableStringTable.h"

namespace qvStringTable {

qvUtil::Error FileUtil::readCatalogFile(qvOS::Filename const & name) {
    return CatalogReader(name.name(), appStringTable()).read();
}

qvUtil::Error Manager::loadCatalog(qvOS::Filename const & name) { return FileUtil::readCatalogFile(name); }

qvUtil::Error Manager::loadCatalog(qvString::IString const & name) { return loadCatalog(qvOS::Filename(name)); }

} // namespace qvStringTable
