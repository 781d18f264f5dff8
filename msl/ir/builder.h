// Makes instructions, folding constants and simplifying on the way, so that what is never needed is
// never built.
#pragma once

#include <initializer_list>
#include <optional>
#include <unordered_map>

#include "msl/ir/ir.h"

namespace msl::ir {

class Builder {
  public:
    explicit Builder(Module& module);

    Module& module() { return module_; }

    // Types.
    TypeId matrix(uint32_t columns, uint32_t rows);
    TypeId array(TypeId element, uint32_t count, uint32_t stride = 0);
    TypeId structure(std::span<const Member> members, bool isBlock, bool laidOut);
    TypeId pointer(TypeId pointee, Storage storage);
    TypeId signedInt(uint32_t components); // of the interface
    TypeId type(const TypeInfo& info);

    // Constants.
    Value constant(TypeId scalar, uint64_t bits);
    Value floatConstant(float value);
    Value intConstant(uint32_t value) { return constant(kInt, value); }
    Value boolConstant(bool value) { return constant(kBool, value ? 1 : 0); }
    // A constant that is given when a pipeline is made; zero where it is not.
    Value specialised(TypeId scalar, uint32_t number);
    Value composite(TypeId type, std::span<const Value> parts);
    Value splat(TypeId type, Value scalar); // scalar or vector type; also of values not constant
    Value zero(TypeId type);
    Value undefined(TypeId type);
    bool isConstant(Value value) const;
    // The bits of a scalar constant.
    std::optional<uint64_t> scalarBits(Value value) const;
    std::optional<float> floatValue(Value value) const;
    // Whether every component of a constant scalar or vector has these bits.
    bool isSplatOf(Value value, uint64_t bits) const;
    Value constantPart(Value value, uint32_t index) const;

    // Blocks. Instructions go to the current one; there is none after a terminator.
    BlockId makeBlock();
    void start(Function& function, BlockId block);
    BlockId current() const { return current_; }
    void setCurrent(BlockId block) { current_ = block; }
    bool open() const { return current_ != kNoBlock; }
    void branch(BlockId target);
    void conditional(Value condition, BlockId whenTrue, BlockId whenFalse);
    void multiway(Value selector, BlockId otherwise, std::span<const Case> cases);
    void terminate(Terminator terminator);
    void selectionMerge(BlockId merge);
    void loopMerge(BlockId merge, BlockId continueBlock);

    // Instructions.
    Value unary(Op op, TypeId type, Value a);
    Value binary(Op op, TypeId type, Value a, Value b);
    Value select(TypeId type, Value condition, Value a, Value b);
    Value construct(TypeId type, std::span<const Value> parts);
    Value extract(Value composite, uint32_t index);
    Value insert(Value composite, Value part, uint32_t index);
    Value extractDynamic(Value vector, Value index);
    Value insertDynamic(Value vector, Value part, Value index);
    Value shuffle(Value vector, std::span<const uint32_t> components);
    Value extended(uint32_t number, TypeId type, std::initializer_list<Value> operands);
    Value emit(Op op, TypeId type, std::span<const uint32_t> operands, uint32_t extra = 0);
    Value emit(Op op, TypeId type, std::initializer_list<uint32_t> operands, uint32_t extra = 0) {
        return emit(op, type, std::span(operands.begin(), operands.size()), extra);
    }
    Value phi(BlockId block, TypeId type, uint32_t operandRoom);
    // Operands of a phi in pairs of value and block. Gives the value that stands for the phi.
    Value finishPhi(Value phi, std::span<const uint32_t> pairs);

    Value variable(TypeId pointee, Storage storage, Function* function);
    TypeId typeOf(Value value) const { return module_.instructions[value].type; }
    uint32_t componentCount(TypeId type) const;
    TypeId componentType(TypeId type) const;
    TypeId partType(TypeId composite, uint32_t index) const;

    size_t instructionCount() const { return module_.instructions.size(); }

  private:
    struct Key {
        TypeId type;
        uint64_t bits;
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        size_t operator()(const Key& key) const {
            return (key.bits * 0x9E3779B97F4A7C15U) ^ (uint64_t{key.type} << 20U);
        }
    };

    Value append(Instruction instruction, std::span<const uint32_t> operands);
    void link(Value value);
    Value foldUnary(Op op, TypeId type, Value a);
    Value foldBinary(Op op, TypeId type, Value a, Value b);
    Value simplifyBinary(Op op, TypeId type, Value a, Value b);
    Value foldExtended(uint32_t number, TypeId type, std::span<const Value> operands);
    bool finishTerminator(Terminator terminator);

    Module& module_;
    BlockId current_ = kNoBlock;
    std::unordered_map<Key, Value, KeyHash> scalars_;
    std::unordered_multimap<uint64_t, Value> composites_;
    std::vector<Value> specialised_;
};

// Folding of single scalars, shared by the builder's cases. Nothing where the result is not
// defined or is left to the device.
std::optional<uint64_t> foldScalar(Op op, TypeId operandType, uint64_t a, uint64_t b);
std::optional<uint64_t> foldScalar(Op op, TypeId operandType, TypeId resultType, uint64_t a);

} // namespace msl::ir
