//! each Builtin
color = vec4(radians(q.x), radians(q.yz), radians(v1234.w - q.w));
color = vec4(degrees(q.x), degrees(q.yz), degrees(v1234.w - q.w));
color = vec4(sin(q.x), sin(q.yz), sin(v1234.w - q.w));
color = vec4(cos(q.x), cos(q.yz), cos(v1234.w - q.w));
color = vec4(tan(q.x), tan(q.yz), tan(v1234.w - q.w));
color = vec4(atan(q.x), atan(q.yz), atan(v1234.w - q.w));
color = vec4(sinh(q.x), sinh(q.yz), sinh(v1234.w - q.w));
color = vec4(cosh(q.x), cosh(q.yz), cosh(v1234.w - q.w));
color = vec4(tanh(q.x), tanh(q.yz), tanh(v1234.w - q.w));
color = vec4(asinh(q.x), asinh(q.yz), asinh(v1234.w - q.w));
color = vec4(exp(q.x), exp(q.yz), exp(v1234.w - q.w));
color = vec4(exp2(q.x), exp2(q.yz), exp2(v1234.w - q.w));
color = vec4(sign(q.x), sign(q.yz), sign(v1234.w - q.w));
color = vec4(abs(q.x), abs(q.yz), abs(v1234.w - q.w));
color = vec4(floor(q.x), floor(q.yz), floor(v1234.w - q.w));
color = vec4(ceil(q.x), ceil(q.yz), ceil(v1234.w - q.w));
color = vec4(trunc(q.x), trunc(q.yz), trunc(v1234.w - q.w));
color = vec4(fract(q.x), fract(q.yz), fract(v1234.w - q.w));
color = vec4(roundEven(q.x), roundEven(q.yz), roundEven(v1234.w - q.w));
color = vec4(asin(q.xy * 0.2), acos(q.zw * 0.2));
color = vec4(acosh(p + one), atanh(q.xy * 0.2));
color = vec4(log(p), log2(p));
color = vec4(sqrt(p), inversesqrt(p));
color = vec4(pow(p, v12), pow(p.x, two), 0);
color = round(q + 0.3);
color = mod(q, 1.7);
color = mod(q, v1234);
float w; float f = modf(q.x, w); color = vec4(f, w, 0, 0);
vec2 w; vec2 f = modf(q.xy, w); color = vec4(f, w);
color = min(q, v1234.wzyx) + max(q, 1.5);
color = clamp(q, -1.0, 1.5) + clamp(q, v1234.xxxx, v1234);
color = mix(q, v1234, 0.25) + mix(q, v1234, q);
color = mix(q, v1234, greaterThan(q, vec4(0.6)));
color = step(v1234, q) + smoothstep(vec4(-1), v1234, q);
color = vec4(length(q), distance(q, v1234), dot(q, v1234), 0);
color = vec4(cross(q.xyz, v1234.zyx), 1);
color = normalize(q + 5);
color = faceforward(q, v1234, q.wzyx);
color = reflect(q, normalize(v1234));
color = refract(normalize(q + 5), normalize(v1234), 0.8);
color = fma(q, v1234, q.wwww);
color = ldexp(q, ivec4(n - 7));
ivec2 e; vec2 f = frexp(p * 3.0, e); color = vec4(f, vec2(e));
color = vec4(isnan(q.x / zero * zero), isinf(one / zero), isnan(one), isinf(q.x));
color = vec4(floatBitsToUint(q.x) >> 20, floatBitsToInt(q.y) >> 20, uintBitsToFloat(0x40000000u + m), intBitsToFloat(0x3F800000 + n));
color = vec4(bitCount(m), findLSB(n * 4), findMSB(n - 7), findMSB(m * 9u));
color = vec4(bitfieldExtract(n - 7, 1, 3), bitfieldExtract(m, 1, 3), bitfieldInsert(n, 5, 2, 3), bitfieldReverse(m) >> 24);
uint c; uint s = uaddCarry(m, 0xFFFFFFF8u, c); uint b; uint d = usubBorrow(m, 9u, b); color = vec4(s & 255u, c, d >> 28, b);
uint hi, lo; umulExtended(m * 0x10000000u, 77u, hi, lo); int ih, il; imulExtended(n - 9, 0x40000000, ih, il); color = vec4(hi, lo >> 24, ih, il >> 24);
color = unpackUnorm4x8(packUnorm4x8(q * 0.2)) + unpackSnorm4x8(packSnorm4x8(q * 0.2));
color = vec4(unpackHalf2x16(packHalf2x16(q.xy)), unpackUnorm2x16(packUnorm2x16(q.zw * 0.25)));
color = vec4(unpackSnorm2x16(packSnorm2x16(q.xy * 0.2)), float(packHalf2x16(v12) >> 16), 0);
color = vec4(any(lessThan(q, v1234)), all(lessThan(q, v1234)), not(bvec2(n > 3, false)));
color = vec4(equal(ivec4(q), ivec4(v1234))) + vec4(notEqual(q, v1234));
color = vec4(dFdx(p.x * p.y), dFdy(p.x * p.y), fwidth(p.x), 0);
color = vec4(outerProduct(q.xy, v12)[1], determinant(mat3(q.xyz, v1234.zyx, v1234.yxw)), 0);
color = inverse(mat4(v1234, q, q.wzxy + 7.0, vec4(3, -5, 1, 2))) * v1234;
color = vec4(inverse(mat3(v1234.xyz, v1234.yxw, vec3(5, 1, -2))) * q.xyz, 1);
color = vec4(inverse(mat2(1, 2, 3, 5)) * q.xy, matrixCompMult(mat2(q), mat2(v1234))[1]);
color = transpose(mat4(q, v1234, q, v1234)) * q;
color = vec4(abs(n - 7), sign(n - 7), min(n, 5), max(m, 9u));
color = vec4(clamp(n, 2, 6), clamp(m, 7u, 9u), mix(1.0, 2.0, n > 3), 0);
color = vec4(exp2(float(n - 7)), 0, 0, 0);
color = vec4(atan(q.y, q.x), atan(q.zw, q.xy), 0);
//! each Expression
color = q * v1234 + q.wzyx / v1234 - q.x;
color = vec4(n / 3, n % 3, -n / 3, (n - 7) * 5);
color = vec4(m / 3u, m % 3u, m * 7u, m - 20u > 5u);
color = vec4(n & 6, n | 9, n ^ 5, ~n);
color = vec4(n << 2, (n - 9) >> 1, m >> 1u, m << 3u);
color = vec4(n > 3 && n < 9, n < 3 || n > 9, n == 5 ^^ n < 9, !(n == 4));
color = n > 5 ? q : n > 3 ? v1234 : vec4(n);
color = q; color.xz = color.zx; color.w += 3.0; color.yx *= 2.0;
color = q; color.wzyx = v1234; color.x = float(n);
color[n % 4] = 5.0; color[(n + 1) % 4] = q[n % 4]; color[(n + 2) % 4] = 1.0; color[(n + 3) % 4] = 2.0;
vec4 a = q; vec4 b = a++; a -= --b; color = a + b;
int a = n; int b = a++ + ++a; a -= b--; color = vec4(a, b, 0, 0);
color = vec4(ivec2(q.xy) % 3, uvec2(p) * 3u);
color = vec4(bool(n), int(q.x * 10.0), uint(p.y * 10.0), float(n == 3));
color = vec4(vec2(n, m), vec2(ivec2(v12) << n % 5));
color = vec4(mat2(1, 2, 3, 4) * q.xy, q.xy * mat2(1, 2, 3, 4));
mat3 a = mat3(q.x); a[1] = v1234.xyz; a[2][0] = 9.0; color = vec4(a * q.xyz, a[n % 3][n / 3 % 3]);
mat4 a = mat4(1.0); a[n % 4] += q; color = a * v1234;
mat2x3 a = mat2x3(1, 2, 3, 4, 5, 6); mat3x2 b = transpose(a); color = vec4(a * q.xy, (b * a)[1].y);
mat4 a = mat4(2.0) + mat4(v1234, q, q, v1234) * 0.5 - mat4(1.0); color = a[0] + a[1] * a[2];
mat3 a = mat3(mat4(q, v1234, q, q)); color = vec4(a[1], mat4(a)[3][3]);
color = vec4(q.xy == v12, q != v1234, ivec2(n) == ivec2(3), mat2(1.0) == mat2(q));
float a, b; a = b = q.x; color = vec4(a, b, (a += 2.0), a);
color = vec4((n++, n), n, 0, 0);
uint a = m; a <<= 3u; a |= 5u; a ^= 0xFFu; a >>= 1u; a %= 100u; color = vec4(a);
color = vec4(1e3 * q.x, 0x1F + n, 010 + n, 5u + m);
const float k[3] = float[](1.0, 2.5, 4.0); color = vec4(k[n % 3], k.length(), 0, 0);
float a[4]; for (int i = 0; i < 4; i++) a[i] = float(i * n); a[n % 4] = -1.0; color = vec4(a[0], a[1], a[2], a[3]);
vec2 a[2][3]; for (int i = 0; i < 6; i++) a[i / 3][i % 3] = vec2(i, n); color = vec4(a[n % 2][n % 3], a[1][2]);
int a[4] = int[4](4, 3, 2, 1); int b[4] = a; b[n % 4] = 9; color = vec4(a[n % 4], b[n % 4], a == b, b[0]);
//! each Flow
color = vec4(0); for (int i = 0; i < n; i++) { if (i == 3) continue; if (i > 9) break; color += vec4(i, 1, 0, 0); }
color = vec4(0); int i = 0; while (true) { if (i++ >= n) break; color.x += float(i); }
int i = 0; do { i += 3; } while (i < n); color = vec4(i);
color = vec4(0); for (float t = 0.0; t < p.x; t += 0.25) for (int j = 0; j < 3; j++) { if (j == n % 3) break; color.y += t; }
switch (n) { case 0: color = vec4(1); break; case 1: case 2: color = vec4(2); break; case 5: color = vec4(5); default: color = vec4(9, q.xyz); }
color = vec4(0); switch (n % 4) { case 0: color.x += 1.0; case 1: color.y += 1.0; break; case 3: color.w += 1.0; }
color = vec4(0); for (int i = 0; i < 6; i++) { switch (i % 3) { case 0: continue; case 1: color.x += 1.0; break; default: color.y += float(i); } color.z += 1.0; if (i > n) break; }
if (n == 5) discard; color = vec4(n);
if (n > 8) { color = vec4(1); return; } color = q; if (n > 3) { color.x = 9.0; return; } color.y = 3.0;
color = vec4(0); for (int i = 0; i < 4; i++) { if (i == n) return; color += vec4(1); for (;;) { if (color.x > 2.0) return; color.x += 0.75; break; } }
float x = q.x; if (x > 0.0) { if (x > 1.0) x = 5.0; else x -= 1.0; } else if (x < -0.6) x = -9.0; color = vec4(x);
int a = 0, b = 1; for (int i = 0; i < n; i++) { int t = a + b; a = b; b = t; } color = vec4(a, b, 0, 0);
float s = 0.0; for (int i = n; i-- > 0;) { float k = float(i); if (mod(k, 2.0) > 0.5) s += k; else s -= k * 0.5; } color = vec4(s);
vec3 c = vec3(0); for (int i = 0, j = 9; i < j; i++, j -= 2) c += vec3(i, j, n); color = vec4(c, 1);
bool found = false; int at = -1; for (int i = 0; i < 10 && !found; i++) { if (i * i >= n) { found = true; at = i; } } color = vec4(at, found, 0, 0);
//! each Texture
color = texture(sampler2D(tex, smp), p / 4.0);
color = textureLod(sampler2D(tex, smp), p.yx / 4.0, 1.0);
color = texelFetch(sampler2D(tex, smp), ivec2(p), 0) + texelFetch(tex, ivec2(n % 2), 1);
color = vec4(textureSize(tex, 0), textureSize(tex, n % 3));
color = textureGrad(sampler2D(tex, smp), p / 4.0, vec2(0.3, 0), vec2(0, 0.3));
color = textureOffset(sampler2D(tex, smp), p / 8.0, ivec2(1, 2));
color = textureGather(sampler2D(tex, smp), p / 4.0) + textureGather(sampler2D(tex, smp), p / 4.0, 2);
color = texture(sampler2D(tex, smp), p / 4.0, 1.0);
color = textureProj(sampler2D(tex, smp), vec3(p, 5.0));
color = textureLodOffset(sampler2D(tex, smp), p / 4.0, 0.0, ivec2(-1, 0));
//! each Mixed
color = vec4(floor(p.x) * 0.5 + fract(p.y * 0.37), abs(sin(p.x)) > 0.5 ? one : zero, max(p.x, p.y) / min(p.x, p.y), length(p));
vec2 c = (p - 2.0) / 4.0; float d = length(c) - 0.3; color = vec4(smoothstep(0.1, -0.1, d), exp(-abs(d) * 8.0), c);
vec3 hsv = vec3(p.x / 4.0, 0.8, 0.9); vec3 k = abs(fract(hsv.x + vec3(0, 2.0 / 3.0, 1.0 / 3.0)) * 6.0 - 3.0); color = vec4(hsv.z * mix(vec3(1), clamp(k - 1.0, 0.0, 1.0), hsv.y), 1);
float a = atan(p.y - 2.0, p.x - 2.0); color = vec4(cos(a * 3.0 + two), sin(a), floor(a * 2.0 + 0.01), 0);
mat3 m3 = mat3(v1234.xyz, q.xyz, v1234.wzy); m3[n % 3] = m3 * m3[1]; m3[0][n % 3] += 1.0; color = vec4(m3[0] + m3[1] - m3[2], determinant(m3) * 0.01);
ivec3 i = ivec3(n, n - 3, 5); i.xz += i.zx; i.y <<= 1; bvec3 b = greaterThan(i, ivec3(4)); color = vec4(mix(vec3(i), vec3(-1), b), any(b));
uvec4 u = uvec4(m) * uvec4(1, 2, 3, 4); u = (u >> 1u) ^ (u << 2u); color = vec4(u % 17u);
vec4 acc = vec4(0); for (int y = -1; y <= 1; y++) for (int x = -1; x <= 1; x++) acc += texture(sampler2D(tex, smp), (p + vec2(x, y)) / 4.0) * (x == 0 || y == 0 ? 2.0 : 1.0); color = acc / 14.0;
float x = p.x; for (int i = 0; i < 20; i++) { x = 3.6 * (x * 0.2) * (1.0 - x * 0.2); if (x < 0.1) break; } color = vec4(floor(x * 10.0));
float lo = 0.0, hi = 10.0; for (int i = 0; i < 20; i++) { float mid = (lo + hi) * 0.5; if (mid * mid < p.x * 4.0) lo = mid; else hi = mid; } color = vec4(lo);
vec4 c = vec4(p, 0, 1); c = c.zyxw; c.xy = c.yx + c.ww; c.rgb /= c.a + 1.0; color = c.wzyx * vec4(1, -1, 1, -1);
int g = n; int r = 0; while (g != 0) { r = r * 2 + (g & 1); g >>= 1; } color = vec4(r, n, float(r) / float(n + 1), r > n);
bool a = n > 2, b = n < 12; color = vec4(a && b, a || b, a ^^ b, a ? (b ? 1.0 : 2.0) : 3.0);
vec2 z = p; float it = 0.0; do { z = vec2(abs(z.x * z.x - z.y * z.y), 2.0 * abs(z.x * z.y)) / dot(z, z) - 0.7; it += 1.0; } while (it < 3.0); color = vec4(z, it, 0);
//! case FunctionsAndOutParameters
void split(float x, out float whole, inout float sum) { whole = floor(x); sum += x - whole; }
float twice(float x) { return x * 2.0; } vec2 twice(vec2 x) { return x * 2.0; } int twice(int x) { return x * 2; }
//! body
float w, s = 1.0; split(q.x * 3.0, w, s); split(q.y, color.y, s); color = vec4(w, s, twice(q.x), twice(n) + twice(p).y);
//! case EarlyReturnsInFunctions
float grade(float x) { if (x < 0.0) return -1.0; for (int i = 0; i < 9; i++) { if (float(i) > x) return float(i); if (i == 4) { return x; } } return 99.0; }
//! body
color = vec4(grade(q.x), grade(q.y * 4.0), grade(float(n)), 0);
//! case StructsAndArrays
struct Light { vec3 at; float power; }; struct Scene { Light lights[3]; mat3 turn; int count; };
vec3 shade(Scene s, int i) { return s.turn * s.lights[i].at * s.lights[i].power; }
//! body
Scene s; s.count = 3; s.turn = mat3(0, 1, 0, 1, 0, 0, 0, 0, 2); for (int i = 0; i < 3; i++) s.lights[i] = Light(vec3(p, i), float(i + n)); s.lights[1].at.y = 7.0; Scene t = s; t.lights[2].power = 0.5; color = vec4(shade(s, n % 3) + shade(t, 2), t.count);
//! case StructsCompareAndAreReturned
struct P { vec2 a; int b[2]; };
P make(int k) { P r; r.a = vec2(k); r.b[0] = k; r.b[1] = k + 1; return r; }
P flip(P x) { P r = x; r.b[0] = x.b[1]; r.b[1] = x.b[0]; return r; }
//! body
P x = make(n), y = flip(make(5)); color = vec4(x == make(5), y.b[0], y.b[1], flip(y) == x);
//! case GlobalsKeepTheirValues
float total = 3.0; const vec4 kTable[4] = vec4[](vec4(1), vec4(2), vec4(3, 4, 5, 6), vec4(0.5)); vec2 cells[2] = vec2[](vec2(1, 2), vec2(3, 4));
void add(float x) { total += x; cells[1].x += x; }
//! body
add(q.x); for (int i = 0; i < n % 4; i++) add(1.5); color = kTable[n % 4] + vec4(total, cells[n % 2], 0);
//! case NoiseAndRotation
float hash(vec2 c) { return fract(sin(dot(c, vec2(12.9898, 78.233))) * 43.0); }
float noise(vec2 c) { vec2 i = floor(c), f = fract(c); f = f * f * (3.0 - 2.0 * f); return mix(mix(hash(i), hash(i + vec2(1, 0)), f.x), mix(hash(i + vec2(0, 1)), hash(i + 1.0), f.x), f.y); }
mat2 turn(float a) { return mat2(cos(a), -sin(a), sin(a), cos(a)); }
//! body
vec2 c = p; float s = 0.0, k = 0.5; for (int i = 0; i < 4; i++) { s += k * noise(c); c = turn(0.6) * c * 1.7; k *= 0.5; } color = vec4(s, c, k);
//! case RayMarching
float map(vec3 x) { vec3 c = abs(x) - vec3(0.6); return min(length(max(c, 0.0)) + min(max(c.x, max(c.y, c.z)), 0.0), length(x - vec3(1, 0, 0)) - 0.5); }
vec3 normal(vec3 x) { vec2 e = vec2(0.001, 0); return normalize(vec3(map(x + e.xyy) - map(x - e.xyy), map(x + e.yxy) - map(x - e.yxy), map(x + e.yyx) - map(x - e.yyx))); }
//! body
vec3 from = vec3(0, 0, -3), way = normalize(vec3(p * 0.2 - 0.4, 1)); float t = 0.0; int i; for (i = 0; i < 64; i++) { float d = map(from + way * t); if (d < 0.001 || t > 9.0) break; t += d; } color = t > 9.0 ? vec4(0) : vec4(floor(abs(normal(from + way * t)) * 2.0 + 0.5), floor(t * 10.0 + 0.5));
//! case Mandelbrot
//! body
vec2 z = vec2(0), c = p * 0.5 - 1.3; int i = 0; for (; i < 40; i++) { z = vec2(z.x * z.x - z.y * z.y, 2.0 * z.x * z.y) + c; if (dot(z, z) > 4.0) break; } color = vec4(i);
//! case IntegerHashes
uint mixed(uint x) { x ^= x >> 16; x *= 0x7feb352du; x ^= x >> 15; x *= 0x846ca68bu; x ^= x >> 16; return x; }
//! body
uint h = mixed(m); color = vec4(h >> 24, (h >> 16) & 255u, (h >> 8) & 255u, h & 255u);
//! case SortingAnArray
//! body
float a[6] = float[](q.x, q.y, 2.0, q.z, -1.0, 0.5); for (int i = 0; i < 5; i++) for (int j = 0; j < 5 - i; j++) if (a[j] > a[j + 1]) { float t = a[j]; a[j] = a[j + 1]; a[j + 1] = t; } color = vec4(a[0], a[2], a[n % 6], a[5]);
//! case PushingThroughAStack
//! body
int stack[8]; int top = 0; stack[top++] = n; int seen = 0; while (top > 0) { int x = stack[--top]; seen += x; if (x > 1 && top < 6) { stack[top++] = x / 2; stack[top++] = x / 3; } } color = vec4(seen, top, 0, 0);
//! case TexturesPassedToFunctions
vec4 look(texture2D t, sampler s, vec2 at) { return texture(sampler2D(t, s), at); }
//! body
color = look(tex, smp, p / 4.0) * 2.0;
//! case SpecialisationConstants
layout(constant_id = 7) const int kCount = 5; layout(constant_id = 8) const float kScale = 2.5; layout(constant_id = 9) const bool kOn = true;
//! body
color = vec4(kOn ? kScale : 1.0, kCount * n, 0, 0);
//! case MatricesOfAllShapes
//! body
mat2x4 a = mat2x4(q, v1234); mat4x2 b = transpose(a); mat3x4 c = mat3x4(v1234, q, q.wzyx); mat4x3 d = transpose(c); color = vec4(b * q, (d * v1234).z, (c * q.xyz).w) + (a * b)[n % 4] + vec4((b * c)[2], 0, 0);
//! case SwizzlesAsArguments
void swapped(inout vec2 x) { x = x.yx; } void raised(inout float x) { x += 10.0; }
//! body
vec4 c = q; swapped(c.zw); raised(c.x); swapped(c.xy); raised(c[n % 4]); color = c;
//! case ArraysAsArguments
float sum(float a[4]) { float s = 0.0; for (int i = 0; i < a.length(); i++) s += a[i]; a[0] = 99.0; return s; } void fill(out float a[4], float x) { for (int i = 0; i < 4; i++) a[i] = x * float(i); } float[4] made(float x) { return float[4](x, x, x + 1.0, 0.0); }
//! body
float a[4]; fill(a, q.x); color = vec4(sum(a), a[0], a[3], sum(made(q.y)));
//! case TernariesWithEffects
int calls = 0; float one_(float x) { calls++; return x; }
//! body
float x = n % 2 == 0 ? one_(1.0) : one_(2.0) + one_(3.0); bool b = n > 3 && one_(1.0) > 0.0 || one_(0.0) > 0.0; color = vec4(x, b, calls, 0);
//! case NestedSwitchesAndLoops
//! body
float r = 0.0; for (int i = 0; i < 3; i++) { switch (i + n % 3) { case 0: r += 1.0; break; case 1: for (int j = 0; j < 4; j++) { if (j == 2) break; r += 10.0; } case 2: switch (n % 2) { case 0: r += 100.0; break; default: r += 200.0; } break; default: r += 0.5; } } color = vec4(r);
//! case DoublyNestedReturns
float find(int want) { for (int i = 0; i < 5; i++) { for (int j = i; j < 5; j++) { switch (j) { case 3: if (i * j == want) return float(i * 10 + j); break; default: if (i + j == want) return float(-i - j); } } } return 77.0; }
//! body
color = vec4(find(n), find(n + 3), find(n * 2), 0);
