#include <bit>

#include "msl/ir/ir.h"

namespace msl::ir {
namespace {

std::string typeText(const Module& module, TypeId id) {
    const TypeInfo& type = module.types[id];
    switch (type.kind) {
    case TypeKind::voidType:
        return "void";
    case TypeKind::boolType:
        return "bool";
    case TypeKind::intType:
        return (type.isSigned ? "s" : "i") + std::to_string(static_cast<uint32_t>(type.width));
    case TypeKind::floatType:
        return "f" + std::to_string(static_cast<uint32_t>(type.width));
    case TypeKind::vector:
        return typeText(module, type.element) + "x" + std::to_string(type.count);
    case TypeKind::matrix:
        return "mat" + std::to_string(type.count) + "<" + typeText(module, type.element) + ">";
    case TypeKind::array:
        return typeText(module, type.element) + "[" + std::to_string(type.count) + "]";
    case TypeKind::structure:
        return "struct" + std::to_string(id);
    case TypeKind::pointer:
        return typeText(module, type.element) + "*";
    case TypeKind::image:
        return "image";
    case TypeKind::sampler:
        return "sampler";
    case TypeKind::sampledImage:
        return "sampled_image";
    }
    return "";
}

std::string valueText(const Module& module, Value value) {
    value = module.resolve(value);
    const auto& instruction = module.instructions[value];
    if (instruction.op == Op::constant) {
        if (instruction.type == kFloat) {
            return std::to_string(std::bit_cast<float>(instruction.extra));
        }
        return std::to_string(instruction.extra);
    }
    if (instruction.op == Op::composite) {
        std::string text = "(";
        for (const Value part : module.operandsOf(instruction)) {
            text += (text.size() > 1 ? " " : "") + valueText(module, part);
        }
        return text + ")";
    }
    return "%" + std::to_string(value);
}

void printInstruction(const Module& module, Value value, std::string& text) {
    const auto& instruction = module.instructions[value];
    const auto& row = info(instruction.op);
    text += "  ";
    if (instruction.type != kVoid) {
        text += "%" + std::to_string(value) + ": " + typeText(module, instruction.type) + " = ";
    }
    text += row.name;
    if (instruction.op == Op::extended) {
        text += "#" + std::to_string(instruction.extra);
    }
    const auto operands = module.operandsOf(instruction);
    const size_t values = module.valuesOf(instruction).size();
    for (size_t i = 0; i < operands.size(); ++i) {
        const bool block = instruction.op == Op::phi && i % 2 == 1;
        text += " " + (block        ? "b" + std::to_string(operands[i])
                       : i < values ? valueText(module, operands[i])
                                    : std::to_string(operands[i]));
    }
    text += "\n";
}

void printTerminator(const Module& module, const Block& block, std::string& text) {
    const auto name = [](BlockId id) { return "b" + std::to_string(id); };
    if (block.merge == Merge::selection) {
        text += "  merge " + name(block.mergeBlock) + "\n";
    } else if (block.merge == Merge::loop) {
        text += "  loop merge " + name(block.mergeBlock) + " continue " +
                name(block.continueBlock) + "\n";
    }
    switch (block.terminator) {
    case Terminator::branch:
        text += "  branch " + name(block.target) + "\n";
        break;
    case Terminator::conditional:
        text += "  branch " + valueText(module, block.condition) + " " + name(block.target) + " " +
                name(block.otherTarget) + "\n";
        break;
    case Terminator::multiway:
        text += "  switch " + valueText(module, block.condition) + " " + name(block.target);
        for (uint32_t i = 0; i < block.caseCount; ++i) {
            const Case& item = module.cases[block.firstCase + i];
            text += " " + std::to_string(item.value) + ":" + name(item.target);
        }
        text += "\n";
        break;
    case Terminator::leave:
        text += "  return\n";
        break;
    case Terminator::discard:
        text += "  discard\n";
        break;
    case Terminator::unreachable:
        text += "  unreachable\n";
        break;
    case Terminator::none:
        text += "  (no end)\n";
        break;
    }
}

} // namespace

std::string print(const Module& module) {
    std::string text;
    for (const auto& function : module.functions) {
        text += (function.stage == Stage::vertex ? "vertex " : "fragment ") + function.name + "\n";
        for (const BlockId id : function.layout) {
            const Block& block = module.blocks[id];
            text += "b" + std::to_string(id) + ":\n";
            for (Value phi = block.firstPhi; phi != kNoValue; phi = module.instructions[phi].next) {
                if (module.resolve(phi) == phi) {
                    printInstruction(module, phi, text);
                }
            }
            for (Value value = block.first; value != kNoValue;
                 value = module.instructions[value].next) {
                if (module.resolve(value) == value) {
                    printInstruction(module, value, text);
                }
            }
            printTerminator(module, block, text);
        }
    }
    return text;
}

} // namespace msl::ir
