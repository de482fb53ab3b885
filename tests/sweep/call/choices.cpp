// What there is to choose for each argument.
#include "sweep/call/choices.h"

#include <cmath>

namespace sweep {

void Choice::apply(Call& call) const {
    if (how == Null) call.setNull(argument);
    if (how == Value) call.pin(argument, value);
    if (how == Below || how == Above) call.pinBeyond(argument, how == Above);
    if (how == Beside) call.pinBeside(argument, other, value);
}

std::vector<Choice> choices(const Signature& s) {
    std::vector<double> numbers;
    for (const Check& check : s.checks) {
        for (const double v : check.expression.numbers()) numbers.push_back(v);
    }
    std::vector<Choice> all;
    for (std::size_t a = 0; a < s.arguments.size(); ++a) {
        const Argument& argument = s.arguments[a];
        if (argument.trusted) continue;
        if (!argument.scalar) {
            if (!s.notes("nonull") && !argument.nullable) all.push_back({Choice::Null, a});
            continue;
        }
        if (argument.low) all.insert(all.end(), {{Choice::Below, a}, {Choice::Above, a}});
        if (argument.type.kind == Kind::Float) {
            for (const double v : {0.0, -1.0, std::nan(""), HUGE_VAL, -HUGE_VAL}) all.push_back({Choice::Value, a, v});
            for (const double v : numbers) {
                for (const double near : {v, v * (1 - 1e-6), v * (1 + 1e-6)}) all.push_back({Choice::Value, a, near});
            }
        } else {
            for (const double v : {0.0, -1.0, -0x1p31, 0x1p31 - 1, 0x1p16, 0x1p30 + 1})
                all.push_back({Choice::Value, a, v});
            for (const double v : numbers) {
                for (const double near : {v - 1, v, v + 1}) all.push_back({Choice::Value, a, near});
            }
            for (std::size_t other = 0; other < s.arguments.size(); ++other) {
                if (other == a || !s.arguments[other].scalar || s.arguments[other].type.kind != Kind::Int) continue;
                all.push_back({Choice::Beside, a, -1, other});
                all.push_back({Choice::Beside, a, 1, other});
            }
        }
    }
    return all;
}

}  // namespace sweep
