#pragma once

#include "KesraNTC/world/CNTVector.h"

#include <string>

/// "1 monster", "3 monsters".
std::string Count(long long number, const std::string& one);
std::string Count(long long number, const std::string& one, const std::string& many);
/// So many things of the kind that the server's catalogue calls so: "1 hat", "5 potions".
std::string Things(long long number, long kind);
/// "(284, -164)": where on the ground.
std::string Place(const CNTVector& position);
/// What a result code of the server's means, with the code.
std::string Meaning(unsigned long result);
