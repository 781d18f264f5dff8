//! each Construction
return float4(v.v12, v.v12); //=> 1 2 1 2
return float4(v.v12.y, float2(3), v.one); //=> 2 3 3 1
return float4(float3(v.one), 2) + float4(int4(1, 2, 3, 4)); //=> 2 3 4 6
float2 a = {v.one, 2}; float3 b{3, 4, 5}; return float4(a, b.yz); //=> 1 2 4 5
float4 a = 7; a = v.two; return a; //=> 2 2 2 2
float4 a = (float4)(v.half_); int4 b = (int4)v.v1234; return a + float4(b); //=> 1.5 2.5 3.5 4.5
return float4(float2x2(1, 2, 3, 4)[1], float2(v.i3, v.u5)); //=> 3 4 3 5
packed_float3 p = packed_float3(1, v.two, 3); return float4(p, p.x); //=> 1 2 3 1
float4 a = float4(half2(v.v12), half2(0.5h)); return a; //=> 1 2 0.5 0.5
bool4 b = bool4(v.v1234 - 2); return float4(b); //=> 1 0 1 1
float3 a = float3(v.v12, 3), b = a; b.x = 9; return float4(a.x, b); //=> 1 9 2 3
uint3 a = uint3(v.v1234.yzw); return float4(float3(a), a.x); //=> 2 3 4 2
//! each Swizzles
return v.v1234.wzyx; //=> 4 3 2 1
return v.v1234.xxyy + v.v1234.zwzw; //=> 4 5 5 6
return v.v1234.bgra; //=> 3 2 1 4
return v.v12.xyxy.zwxy.wwww; //=> 2 2 2 2
float4 a = 0; a.xz = v.v12; a.w = 5; return a; //=> 1 0 2 5
float4 a = v.v1234; a.xyz = a.zxy; return a; //=> 3 1 2 4
float4 a = v.v1234; a.wx = a.xw; return a; //=> 4 2 3 1
float4 a = v.v1234; a.yz += 10; a.xy *= 2; return a; //=> 2 24 13 4
float4 a = v.v1234; a.rgb = a.bbb - 1; return a; //=> 2 2 2 4
float4 a = v.v1234; a.x++; --a.w; a.z -= a.y; return a; //=> 2 2 1 3
float3 a = (v.v1234 + 1).xyz; return float4(a.yx, a.z, (a * 2).x); //=> 3 2 4 4
int4 a = int4(v.v1234); a.yw <<= 2; return float4(a); //=> 1 8 3 16
float2 a = v.v12; a = a.yx; a.x = a.x + a.y; return float4(a, a.xx); //=> 3 1 3 3
half4 a = half4(v.v1234); a.xw = a.wx; return float4(a); //=> 4 2 3 1
//! each Operators
return v.v1234 * 2 + 1; //=> 3 5 7 9
return 10 / v.v1234; //=> 10 5 3.3333333 2.5
return v.v1234 * v.v1234 - v.v1234.wzyx; //=> -3 1 7 15
return float4(v.v1234 > 2); //=> 0 0 1 1
return float4(v.v1234 == v.v1234.wyzx); //=> 0 1 1 0
return float4(-v.v1234.xy, +v.v1234.zw); //=> -1 -2 3 4
int4 a = int4(7, -7, 9, 10); return float4(a / v.i3); //=> 2 -2 3 3
int4 a = int4(7, -7, 9, 10); return float4(a % v.i3); //=> 1 -1 0 1
uint4 a = uint4(1, 2, 3, 4); return float4(a << uint4(0, 1, 2, 3)); //=> 1 4 12 32
int4 a = int4(v.v1234); return float4((a & 1) | (a ^ 2) & 4); //=> 1 0 1 4
bool4 a = v.v1234 > 1 && v.v1234 < 4; return float4(a); //=> 0 1 1 0
bool4 a = v.v1234 < 2 || v.v1234 == 4; return float4(!a); //=> 0 1 1 0
float4 a = v.v1234; a /= v.two; a -= float4(0, 1, 0, 1); return a; //=> 0.5 0 1.5 1
return v.v1234 > 2 ? float4(10) : v.v1234; //=> 1 2 10 10
return select(v.v1234, -v.v1234, bool4(true, false, true, false)); //=> -1 2 -3 4
//! each Indexing
float4 a = v.v1234; return float4(a[0], a[v.i3], a[v.u5 - 4], a[3 - 1]); //=> 1 4 2 3
float4 a = 0; for (int i = 0; i < 4; i++) a[i] = i * i; return a; //=> 0 1 4 9
float2x3 m = float2x3(float3(1, 2, 3), float3(4, 5, 6)); return float4(m[1], m[v.i3 - 3][v.i3 - 1]); //=> 4 5 6 3
float3x3 m(v.two); m[1][2] = 5; m[v.i3 - 3] += 1; return float4(m[0], m[1].z); //=> 3 1 1 5
float4x4 m(1); m[3].xyz = float3(v.v12, 9); return m * float4(1, 1, 1, 1); //=> 2 3 10 1
//! each Matrices
float2x2 m = float2x2(1, 2, 3, 4); return float4(m * v.v12, v.v12 * m); //=> 7 10 5 11
float2x2 a = float2x2(1, 2, 3, 4), b = float2x2(v.two); return float4((a * b)[0], (b * a)[1]); //=> 2 4 6 8
float2x3 a = float2x3(1, 2, 3, 4, 5, 6); return float4(a * v.v12, (float3(1) * a).x); //=> 9 12 15 6
float3x2 a = float3x2(1, 2, 3, 4, 5, 6); return float4(a * float3(1, 1, v.one), transpose(a)[1].xz); //=> 9 12 2 6
float4x4 m = float4x4(float4(1), float4(2), float4(3), v.v1234); return transpose(m)[3]; //=> 1 2 3 4
float3x3 m = float3x3(1, 2, 3, 0, 1, 4, 5, 6, v.zero); return float4(determinant(m), (-m)[0]); //=> 1 -1 -2 -3
float2x2 m = float2x2(1); m += m; m *= v.two; m -= float2x2(1); return float4(m[0], m[1]); //=> 3 0 0 3
float2x2 m = 2 * float2x2(1, 2, 3, 4) / v.two; return float4(m[0], m[1]); //=> 1 2 3 4
half3x3 m = half3x3(2.0h); return float4(float3(m * half3(1, 2, 3)), determinant(m)); //=> 2 4 6 8
float4x3 m = float4x3(float3(1), float3(2), float3(3), float3(v.v12, 9)); return float4(m * float4(0, 0, 0, 1), m[2].y); //=> 1 2 9 3
