//! each Integers
int a = v.i3; return float4(a + 4, a - 4, a * -4, 7 / a); //=> 7 -1 -12 2
int a = -v.i3; return float4(7 / a, 7 % a, -7 / a, -7 % a); //=> -2 1 2 -1
uint a = v.u5; return float4(a - 6 > 100u, a / 2u, a % 3u, -a == 0xFFFFFFFBu); //=> 1 2 2 1
int a = v.i3; return float4(a << 3, a >> 1, -a >> 1, uint(-a) >> 30); //=> 24 1 -2 3
int a = 0x7FFFFFFF; a += int(v.one); return float4(a < 0, uint(a) == 0x80000000u, a == -2147483647 - 1, 0); //=> 1 1 1 0
int a = v.i3 | 8; a &= ~1; a ^= 6; return float4(a, a & 4, a | 1, ~a); //=> 12 4 13 -13
uint a = 1u << 31; return float4(a >> 31, int(a) >> 31, (a >> v.u5) == 0x04000000u, a != 0); //=> 1 -1 1 1
int a = v.i3; int b = a++ + ++a; return float4(a, b, a--, --a); //=> 5 8 5 3
int a = 5; a -= v.i3; a *= a; a %= 3; a <<= 4; return float4(a, a >>= 2, a |= 3, a ^= 7); //=> 16 4 7 0
return float4(1 + 2 * 3 - 4 / 2, (1 + 2) * 3, 10 % 4 * 2, 2 + 3 << 1) * v.one; //=> 5 9 4 10
return float4(1 < 2 == true, 5 & 3 == 3, (5 & 3) == 1, 1 ^ 3 | 4) * v.one; //=> 1 1 1 6
int a = v.i3; return float4(-a + +a, - -a, !a, !!a); //=> 0 3 0 1
//! each SmallIntegers
char a = 100; a += char(v.i3 * 20); return float4(a, uchar(a), short(a), ushort(a)); //=> -96 160 -96 65440
uchar a = 200; uchar b = 100; return float4(a + b, uchar(a + b), a - b, uchar(b - a)); //=> 300 44 100 156
short a = 32767; a++; return float4(a, ushort(a), a / 2, a >> 8); //=> -32768 32768 -16384 -128
ushort a = 3; a -= 5; return float4(a, a + 2, short(a), a >> 15); //=> 65534 65536 -2 1
uchar a = 0xF0; a = ~a; uchar b = a << 5; return float4(a, b, a * b, uchar(a * b)); //=> 15 224 3360 32
char a = -128; return float4(-a, char(-a), abs(int(a)), a / -1); //=> 128 -128 128 128
uchar2 a = uchar2(250, 10); a += uchar2(v.i3 + 4); return float4(a.x, a.y, (a << uchar2(1)).y, -a.y); //=> 1 17 34 -17
short3 a = short3(-1, 2, 300); ushort3 b = ushort3(a); return float4(b.x, b.z, (a * a).y, (a >> short3(1)).z); //=> 65535 300 4 150
//! each LongIntegers
long a = 1L << 40; return float4(a >> 38, (a * v.i3) >> 40, -a >> 39, a > 0xFFFFFFFF); //=> 4 3 -2 1
ulong a = 0xFFFFFFFFFFFFFFFFul; return float4(a >> 60, a + 2ul, a % 10ul, a / 0x1000000000000000ul); //=> 15 1 5 15
long a = v.i3; a = a * 1000000007L % 10L; return float4(a, long(-7) / 2, long(-7) % 2, ulong(7) / 2); //=> 1 -3 -1 3
long2 a = long2(v.i3, -5) << long2(33); return float4(float2(a >> long2(32)), a.x > a.y, a.y < 0); //=> 6 -10 1 1
//! each Floats
float a = v.two; return float4(a + 0.5, a - 2.5, a * -1.5, a / 8); //=> 2.5 -0.5 -3 0.25
float a = v.one / v.zero; return float4(isinf(a), a > 1e38, -a < 0, isnan(v.zero / v.zero)); //=> 1 1 1 1
float n = v.zero / v.zero; return float4(n == n, n != n, n < 1, !(n >= 1)); //=> 0 1 0 1
float a = v.two; a += a *= 3; return float4(a, a -= 2, a /= 4, -a); //=> 12 10 2.5 -2.5
float a = v.half_; return float4(a++, ++a, a--, --a); //=> 0.5 2.5 2.5 0.5
return float4(1.0 / 3.0 * 3.0 == 1.0, 0.1f + 0.2f > 0.3f - 1e-6f, 1e10f * 1e-10f, 5e-1) * v.one; //=> 1 1 1 0.5
half a = half(v.half_); half b = a * 4.0h + 1.0h; return float4(b, a / b * 6, -a, a > b); //=> 3 1 -0.5 0
float a = -v.zero; return float4(a == 0, signbit(-v.one) == signbit(-v.two), 1 / abs(a) > 0, max(a, 0.0f)); //=> 1 1 1 0
//! each Mixed
return float4(v.i3 + 0.5, v.i3 / 2.0, v.i3 / 2, v.u5 * 0.5f); //=> 3.5 1.5 1 2.5
return float4(true + true, true * 3.5, 'a' - 'A', v.i3 + v.u5) * v.one; //=> 2 3.5 32 8
int a = v.i3; a *= 0.5; int b = 7; b /= 2.0; uint c = 3u; c += 1.9; return float4(a, b, c, 5 / 2 * 2.0); //=> 1 3 4 4
return float4(v.i3 < v.u5, -1 < int(v.u5), -v.i3 > v.u5, v.i3 == 3.0); //=> 1 1 1 1
half a = 1.5h; float b = a + v.two; half c = a + half(v.two); return float4(b, c, a * v.two, v.i3 * a); //=> 3.5 3.5 3 4.5
