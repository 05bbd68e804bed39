#include "tool/ctl/table.h"

namespace tool::ctl {

const std::vector<Subject> &subjects() {
    // Never destroyed: threads of the library outlive main().
    static const std::vector<Subject> &all = *new std::vector<Subject>{
        lensCommands(), exposureCommands(),    colourCommands(), pictureCommands(), systemCommands(),
        kovaCommands(), kovaServiceCommands(), linkCommands(),   benchCommands()};
    return all;
}

} // namespace tool::ctl
