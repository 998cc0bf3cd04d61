#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace vek::tools {

// The whole program: `args` are the arguments after its name. The report
// goes to `out`, a failure to `err` as one line, and, where `err` is a
// terminal, the stages of a long run (see Progress). Returns the exit code:
// 0 done, 2 bad arguments or an unreadable or unwritable file, 1 otherwise.
int RunTriangulateField(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                        bool errIsTerminal = false);

// Where the bundled elevation model is (see BundledInputName): beside the
// sources this program was built from, then from the folder of the
// executable up to a build tree's sources or an installation's share/vekdll,
// then under the current folder. Empty if it is in none of them.
std::string FindBundledInput();

} // namespace vek::tools
