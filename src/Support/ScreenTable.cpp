#include "Support/ScreenTable.h"

// placeholder until the tool branch lands
std::string ScreenTable::write(const std::vector<Screen>&)
{
    return {};
}
