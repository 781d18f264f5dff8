//! each Loops
float s = 0; for (int i = 0; i < 5; i++) { if (i == 2) continue; if (i == 4) break; s += i; } return float4(s); //=> 4 4 4 4
int n = 0; while (n < 10) n += v.i3; return float4(n); //=> 12 12 12 12
int n = 0; do { n++; } while (n < v.i3); return float4(n); //=> 3 3 3 3
int n = 10; do n--; while (false); return float4(n * v.one); //=> 9 9 9 9
int s = 0; for (int i = 0; i < 3; ++i) for (int j = i; j < 3; ++j) s += 10 * i + j; return float4(s * v.one); //=> 48 48 48 48
int s = 0; for (int i = 0; i < 4; ++i) { for (int j = 0; j < 4; ++j) { if (j > i) break; if (j == 1) continue; s++; } } return float4(s * v.one); //=> 7 7 7 7
float x = 0; for (float t = 0; t < 1; t += 0.25) x += t; return float4(x * v.one); //=> 1.5 1.5 1.5 1.5
int a[5] = {1, 2, 3, 4, 5}; int s = 0; for (int x : a) if (x % 2) s += x; return float4(s * v.one); //=> 9 9 9 9
float a[3] = {1, 2, 3}; for (thread auto& x : a) x *= v.two; return float4(a[0], a[1], a[2], 0); //=> 2 4 6 0
uint n = 0; for (uint i = 8; i; i >>= 1) n++; return float4(n * v.one); //=> 4 4 4 4
int i = 0; for (; i < 100;) { if (i * i > 50) break; i++; } return float4(i * v.one); //=> 8 8 8 8
int s = 0; for (int i = 3; i-- > 0;) s = s * 10 + i; return float4(s * v.one); //=> 210 210 210 210
float s = 0; for (short i = 0; i < 3; ++i) for (ushort j = 0; j < 2; ++j) s += v.v1234[i + j]; return float4(s); //=> 15 15 15 15
int a = 1, b = 1; for (int i = 0; i < 8; i++) { int t = a + b; a = b; b = t; } return float4(a, b, 0, 0) * v.one; //=> 34 55 0 0
bool found = false; int at = -1; for (int i = 0; i < 4 && !found; i++) { found = v.v1234[i] > 2; at = i; } return float4(found, at, 0, 0); //=> 1 2 0 0
//! each Switches
int r = 0; switch (v.i3) { case 1: r = 1; break; case 3: r = 3; break; default: r = 9; } return float4(r); //=> 3 3 3 3
int r = 0; switch (v.i3) { case 3: r += 1; case 4: r += 2; break; case 5: r += 4; } return float4(r); //=> 3 3 3 3
int r = 0; switch (v.u5) { default: r = 7; break; case 1u: r = 1; } return float4(r); //=> 7 7 7 7
int r = 0; for (int i = 0; i < 4; i++) { switch (i) { case 1: continue; case 3: break; default: r += 10; } r += i; } return float4(r * v.one); //=> 25 25 25 25
int r = 5; switch (v.i3 - 3) { case -1: r = 1; break; case 0: { int k = 4; r = k; break; } } return float4(r); //=> 4 4 4 4
switch (v.i3) { case 2: return 2; case 3: return float4(3, 0, 0, 0); } return 9; //=> 3 0 0 0
//! each Branches
float r; if (v.one > 2) r = 1; else if (v.one > 0) r = 2; else r = 3; return float4(r); //=> 2 2 2 2
if (v.one > 0) { if (v.two > 5) return 1; } else return 2; return 3; //=> 3 3 3 3
float a = v.one > 0 ? v.two > 5 ? 1 : 2 : 3; return float4(a); //=> 2 2 2 2
int n = 0; bool b = (n++, v.one > 0) && (n++, v.one > 5) && (n++, true); return float4(n, b, 0, 0); //=> 2 0 0 0
int n = 0; if (v.zero > 0 || ++n > 0) n += 10; return float4(n); //=> 11 11 11 11
if (int x = v.i3 - 3) return x; else return x - 1; //=> -1 -1 -1 -1
float a = 1; { float a = 2; a += v.one; } return float4(a); //=> 1 1 1 1
int x = v.i3; x = x > 2 ? x > 5 ? 1 : 2 : 3, x += 10; return float4(x); //=> 12 12 12 12
