#include <metal_stdlib>
using namespace metal;
enum class Op { add, mul, neg };
float run(Op op, float a, float b) { switch (op) { case Op::add: return a + b; case Op::mul: return a * b; default: return -a; } }
int letter(char c) { switch (c) { case 'a': case 'b': return 1; case '\n': return 2; } return 3; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(run(Op::add, v.two, 3), run(Op::mul, v.two, 3), run(Op::neg, v.two, 0), letter('b') * 100 + letter('\n') * 10 + letter('z'));

}
