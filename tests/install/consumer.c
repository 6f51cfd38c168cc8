/* Uses an installed qmrgen through its exported CMake target or pkg-config. */
#include <stdio.h>
#include <string.h>

#include "qmr/qmr.h"

int main(void)
{
    if (strcmp(rtypname(QMR_SQL_BIGINT), "bigint") != 0 || get_toerrno() != 0)
        return 1;
    puts("installed qmrgen works");
    return 0;
}
