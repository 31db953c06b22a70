// Numbers that come out the same on every system.
#pragma once

class CCompositeGeometry;

/// The nearest number that is stored whole, and a little more, so that cutting cannot take its last step away. Without
/// this, the last bit of a sine, which differs between systems, would decide on a digit in the file.
double Settled(double value);
/// Does that to where an element and its components lie.
void Settle(CCompositeGeometry& element);
