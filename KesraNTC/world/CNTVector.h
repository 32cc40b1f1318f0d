#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"

/// A position or direction in the world. The ground plane is x-z, y is the vertical axis. Arithmetic is that
/// of IEEE single precision; nothing guards against division by zero.
class KESRANTC_API CNTVector
{
public:
    /// All components 0.
    constexpr CNTVector() = default;
    /// The same number in all components.
    constexpr CNTVector(float v) : x(v), y(v), z(v) {}
    constexpr CNTVector(float xValue, float yValue, float zValue) : x(xValue), y(yValue), z(zValue) {}
    /// The three numbers that the pointer leads to.
    constexpr CNTVector(const float* const p) : x(p[0]), y(p[1]), z(p[2]) {}

    /// Component 0 is x, 1 is y, 2 is z. The index is not checked; any other reaches z.
    constexpr float& operator[](int i) { return i == 0 ? x : i == 1 ? y : z; }
    constexpr const float& operator[](int i) const { return i == 0 ? x : i == 1 ? y : z; }

    /// Component by component.
    constexpr CNTVector& operator+=(const CNTVector& v) { return *this = {x + v.x, y + v.y, z + v.z}; }
    constexpr CNTVector& operator-=(const CNTVector& v) { return *this = {x - v.x, y - v.y, z - v.z}; }
    constexpr CNTVector& operator*=(const CNTVector& v) { return *this = {x * v.x, y * v.y, z * v.z}; }
    constexpr CNTVector& operator/=(const CNTVector& v) { return *this = {x / v.x, y / v.y, z / v.z}; }
    /// Every component with the same number; the quotient is a division, not a product with a reciprocal.
    constexpr CNTVector& operator*=(float v) { return *this = {x * v, y * v, z * v}; }
    constexpr CNTVector& operator/=(float v) { return *this = {x / v, y / v, z / v}; }

    float x = 0;
    float y = 0;
    float z = 0;
};

/// The wire form, 8 bytes, into a packet or any other sink: y does not travel.
template <class Out> Out& WriteFields(Out& out, const CNTVector& vector)
{
    out << vector.x;
    out << vector.z;
    return out;
}

inline CNTPacket& operator<<(CNTPacket& packet, const CNTVector& vector)
{
    return WriteFields(packet, vector);
}

/// Reads x and z from a packet or any other source; y stays.
template <class In> In& ReadFields(In& in, CNTVector& vector)
{
    in >> vector.x;
    in >> vector.z;
    return in;
}

inline CNTPacket& operator>>(CNTPacket& packet, CNTVector& vector)
{
    return ReadFields(packet, vector);
}
