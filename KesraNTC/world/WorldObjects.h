#pragma once

// The four kinds of object that have a place in the world.
#include "KesraNTC/world/TAvatar.h"
#include "KesraNTC/world/TMonster.h"
#include "KesraNTC/world/TNPC.h"
#include "KesraNTC/world/TWorldItem.h"
