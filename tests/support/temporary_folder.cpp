#include "tests/support/temporary_folder.h"

#include "tests/support/fake_contract.h"

#include <string>
#include <system_error>

#include <stdlib.h>
#include <unistd.h>

namespace vantor {

TemporaryFolder::TemporaryFolder() : owner_(getpid()) {
    std::string pattern = (std::filesystem::temp_directory_path() / "vantor-test-XXXXXX").string();
    fakeRequire(mkdtemp(pattern.data()) != nullptr, "a temporary folder can be made");
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    if (getpid() != owner_) {
        return;
    }
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

} // namespace vantor
