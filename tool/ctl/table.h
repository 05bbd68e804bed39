#ifndef VISCACAM_TOOL_CTL_TABLE_H
#define VISCACAM_TOOL_CTL_TABLE_H

#include "tool/ctl/command.h"

namespace tool::ctl {

/* Every command, by subject. Lives as long as the program. */
const std::vector<Subject> &subjects();

template <typename Visit>
void forEachRow(Visit visit) {
    for (const Subject &subject : subjects())
        for (const Row &row : subject.rows)
            visit(row);
}

/* The subjects, each in a file of its own. */
Subject lensCommands();
Subject exposureCommands();
Subject colourCommands();
Subject pictureCommands();
Subject systemCommands();
Subject kovaCommands();
Subject kovaServiceCommands();
Subject linkCommands();
Subject benchCommands();

} // namespace tool::ctl

#endif
