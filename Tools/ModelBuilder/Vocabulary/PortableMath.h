// Exponential and logarithm by basic operations, so that every machine and compiler gives the same digits.
//
// IEEE arithmetic rounds +, -, *, / and the square root in one way; the C library's exp and log may differ in
// the last digit from one version to the next, which training would carry into the model.
#ifndef MODEL_BUILDER_PORTABLE_MATH_H
#define MODEL_BUILDER_PORTABLE_MATH_H

// e to the power of x, for x <= 0. Below -40 it is 0; the relative error stays under 1e-7 above -20.
inline double PortableExp(double x)
{
    if (x < -40) return 0;
    double y = x / 1048576.0;  // halve the argument twenty times, one Taylor step, square back
    y = 1 + y * (1 + y / 2);
    for (int i = 0; i < 20; ++i) y *= y;
    return y;
}

// The natural logarithm of x, for x > 0, with an absolute error under 1e-12 for x of 1e-9 to 1e9.
inline double PortableLog(double x)
{
    constexpr double LN2 = 0.69314718055994531;
    int doubled = 0;  // halve or double towards 1, then the series of the inverse hyperbolic tangent
    while (x > 1.5) x /= 2, ++doubled;
    while (x < 0.75) x *= 2, --doubled;
    const double t = (x - 1) / (x + 1);
    double sum = 0, power = t;
    for (int i = 1; i < 30; i += 2, power *= t * t) sum += power / i;
    return 2 * sum + doubled * LN2;
}

#endif  // MODEL_BUILDER_PORTABLE_MATH_H
