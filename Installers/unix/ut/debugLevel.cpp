#include "ut/debugLevel.h"

static int s_iDebugLevel = 0;

int OV_instGetDebugLevel()
{
    return s_iDebugLevel;
}

void OV_instSetDebugLevel(int iLevel)
{
    s_iDebugLevel = iLevel;
}
