// Reads what a package manager knows of its packages as facts.

#ifndef StatusReader_h
#define StatusReader_h

#include "Base/Logic/qvPlgDatabase.h"

#include <iosfwd>

namespace packages {

// Reads paragraphs of lines "Field: value", as `dpkg --status` prints them and the status file of dpkg holds them.
// Packages that are not installed are passed over, and so are fields that are not asked for and lines that are none.
// What is added, for each package:
//
//     package(name, version)
//     section(name, section)
//     depends(name, other)    for each dependency; of alternatives the first one that is installed, else the first
//     needed(other, name)     the same the other way round, because facts are found by their first argument
//
// Gives the number of packages.
int readStatus(std::istream & stream, qvPlg::Database & database);

} // namespace packages

#endif
