// Reads the rules.
#include "sweep/rules.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace sweep {
namespace {

#define S(name) \
    { #name, kelStatus##name }
const std::map<std::string, KelStatus> kStatuses = {
    S(Err),          S(AllocError),  S(BadArg),    S(Size),         S(OutOfRange), S(NullPtr),    S(NoMemory),
    S(DivByZeroErr), S(FftOrder),    S(FftFlag),   S(ContextMatch), S(Step),       S(NoConverge), S(ModeNotSupported),
    S(NegOcc),       S(FBankState),  S(FBankFlag), S(FBankFreq),    S(NoRoot),     S(BadLsp),     S(LpcCalc),
    S(LengthRange),  S(UnknownKind), S(ZeroOcc),   S(NoOperation)};
#undef S

[[noreturn]] void bad(const Function& function, const std::string& what) {
    std::fprintf(stderr, "the rule of %s: %s\n", function.name, what.c_str());
    std::abort();
}

std::vector<std::string> cut(const std::string& text, char at) {
    std::vector<std::string> parts;
    int depth = 0;
    std::string part;
    for (const char c : text + at) {
        depth += c == '[' || c == '(';
        depth -= c == ']' || c == ')';
        if (c == at && depth == 0) {
            if (!part.empty()) parts.push_back(part);
            part.clear();
        } else {
            part += c;
        }
    }
    return parts;
}

// The text of an argument, taken apart; expressions follow when all names are known.
struct Words {
    std::string name, shape, low, high;
    std::vector<std::string> aliases;
    Argument argument;
    bool fits(const Type& type) const {
        if (type.kind == Kind::Int || type.kind == Kind::Float) return argument.scalar;
        if (argument.scalar) return false;
        const std::size_t extents = cut(shape, ',').size();
        if (extents == 3) return true;
        const bool rows = argument.created || extents == 2 || (!argument.kind.empty() && !shape.empty());
        return rows == (type.kind == Kind::Rows);
    }
};

Words wordsOf(std::string text) {
    Words words;
    Argument& argument = words.argument;
    if (text.front() == '(') {
        argument.optional = true;
        text = text.substr(1, text.size() - 2);
    }
    argument.readToo = text.front() == '+';
    argument.scratch = text.front() == '~';
    if (argument.readToo || argument.scratch) text.erase(0, 1);
    std::size_t at = text.find_first_of("?[=|@><!");
    words.name = text.substr(0, at);
    argument.scalar = true;
    while (at < text.size()) {
        const char sign = text[at++];
        if (sign == '?') argument.nullable = true, argument.scalar = false;
        if (sign == '!') argument.trusted = true;
        if (sign == '[') {
            int depth = 1;
            const std::size_t begin = at;
            for (; depth > 0; ++at) depth += (text[at] == '[') - (text[at] == ']');
            words.shape = text.substr(begin, at - 1 - begin);
            argument.scalar = false;
        }
        const std::size_t end = sign == '=' ? std::min(text.find_first_of("|!", at), text.size())
                                            : std::min(text.find_first_of("?[=|@><!", at), text.size());
        const std::string rest = sign == '?' || sign == '[' || sign == '!' ? "" : text.substr(at, end - at);
        if (!rest.empty()) at = end;
        if (sign == '|') words.aliases.push_back(rest);
        if (sign == '@' || sign == '>' || sign == '<') {
            argument.kind = rest;
            argument.scalar = false;
            argument.created = sign == '>';
            argument.released = sign == '<';
        }
        if (sign == '=') {
            const std::size_t dots = rest.find("..");
            argument.any = rest == "any";
            if (!argument.any) {
                words.low = rest.substr(0, dots);
                words.high = dots == std::string::npos ? words.low : rest.substr(dots + 2);
            }
        }
    }
    return words;
}

// Which words the function's arguments are: those that a rule has for other functions are passed over.
bool match(const std::vector<Words>& words, std::size_t w, const Function& f, std::size_t a, std::vector<Words>& out) {
    if (w == words.size()) return a == f.count;
    if (a < f.count && words[w].fits(f.types[a])) {
        out.push_back(words[w]);
        if (match(words, w + 1, f, a + 1, out)) return true;
        out.pop_back();
    }
    return words[w].argument.optional && match(words, w + 1, f, a, out);
}

}  // namespace

KelStatus statusOf(const std::string& name) {
    const auto found = kStatuses.find(name);
    if (found == kStatuses.end()) std::fprintf(stderr, "no status is called %s\n", name.c_str()), std::abort();
    return found->second;
}

Signature::Signature(const Function& itsFunction, const Rule& rule) : function(itsFunction), noteText(rule.notes) {
    std::vector<Words> all, words;
    for (const std::string& text : cut(rule.arguments, ' ')) all.push_back(wordsOf(text));
    if (!match(all, 0, function, 0, words)) bad(function, std::string("no match of ") + rule.arguments);
    for (Words& w : words) {
        w.argument.name = w.name;
        w.argument.type = function.types[arguments.size()];
        const std::string name = function.name;
        if (!w.argument.kind.empty() && w.argument.kind.back() == ':') w.argument.kind += name.back();
        arguments.push_back(w.argument);
    }
    bool absent = false;
    const auto lookup = [&](const std::string& name) -> std::size_t {
        const std::string owner = name.substr(0, name.find('.'));
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (arguments[i].name != owner) continue;
            if (owner.size() == name.size()) return i;
            properties.push_back({i, name.substr(owner.size() + 1)});
            return kFirstProperty + properties.size() - 1;
        }
        // An argument that this function does not have counts as 0.
        for (const Words& w : all) {
            if (w.name == owner) return absent = true, kFirstProperty - 1;
        }
        bad(function, "nothing is called " + name);
    };
    for (std::size_t i = 0; i < words.size(); ++i) {
        std::vector<std::string> extents = cut(words[i].shape, ',');
        if (extents.size() == 3 && arguments[i].type.kind == Kind::Rows) extents.erase(extents.begin() + 1);
        for (const std::string& extent : extents) arguments[i].shape.emplace_back(extent, lookup);
        if (!words[i].low.empty()) arguments[i].low = Expression(words[i].low, lookup);
        if (!words[i].high.empty()) arguments[i].high = Expression(words[i].high, lookup);
        for (const std::string& alias : words[i].aliases) {
            for (std::size_t j = 0; j < arguments.size(); ++j) {
                if (arguments[j].name == alias) arguments[i].aliases.push_back(j);
            }
        }
    }
    for (const std::string& text : cut(rule.checks, ';')) {
        std::istringstream in(text);
        std::string name, condition;
        in >> name;
        std::getline(in, condition);
        const bool conditional = !name.empty() && name.back() == ':';
        if (conditional) name.pop_back();
        if (name.empty()) continue;
        Check check = {statusOf(name), condition, {}};
        absent = false;
        if (conditional) check.expression = Expression(condition, lookup);
        if (!absent) checks.push_back(check);
    }
    std::istringstream in(noteText);
    for (std::string note; in >> note;) {
        if (note.rfind("may:", 0) == 0) may.push_back(statusOf(note.substr(4)));
        if (note.rfind("memory:", 0) == 0) memory = statusOf(note.substr(7));
    }
}

bool Signature::roundsByMode() const {
    const bool floats = std::any_of(arguments.begin(), arguments.end(), [](const Argument& a) {
        return a.type.isConst && a.type.element == Element::Float;
    });
    return notes("mode") || (floats && notes("floatmode"));
}

const std::vector<Signature>& signatures() {
    static const std::vector<Signature> all = [] {
        std::vector<Signature> found;
        for (const auto& rules : {vectorRules, frontendRules, predictionRules, scoreRules, mixtureRules, trainingRules,
                                  matrixRules, codebookRules, matchRules, enhanceRules, resampleRules, auroraRules,
                                  echoRules, featureRules, pitchRules}) {
            for (const Rule& rule : rules()) {
                for (const Function& function : rule.functions) found.emplace_back(function, rule);
            }
        }
        std::sort(found.begin(), found.end(), [](const Signature& a, const Signature& b) {
            return std::string(a.function.name) < b.function.name;
        });
        return found;
    }();
    return all;
}

const std::vector<std::string>& apart() {
    static const std::vector<std::string> names = {
        // memory and the version record: memory_test
        "kelsMalloc_8u", "kelsMalloc_16s", "kelsMalloc_32s", "kelsMalloc_32f", "kelsMalloc_64f", "kelsFree",
        "kelsrGetLibVersion",
        // texts: features_test
        "kelsrGetStatusString", "kelsrGetTargetName",
        // the processor and its control words: cpu_test
        "kel_has_cpuid", "kel_max_cpuid_input", "kel_has_rdtsc", "kel_is_mmx_extension", "kel_is_ssx_extension",
        "kel_is_vbz_extension", "kel_is_vcz_extension", "kel_is_htt_extension", "kel_is_x64e_extension",
        "kel_is_GenuineOrvex", "kel_get_talvine_ident", "kel_get_talvine_counter", "kel_clear_ssx", "kel_tst_daz_ssx",
        "kel_status87", "kel_clear87", "kel_set_cw_fpu", "kel_set_cw_ssx", "kel_set_rcpc_fpu", "kel_set_rc_ssx",
        "kel_control87", "kel_isnan", "kel_finite"};
    return names;
}

const Signature& signature(const std::string& name) {
    for (const Signature& s : signatures()) {
        if (name == s.function.name) return s;
    }
    std::fprintf(stderr, "%s has no rule\n", name.c_str());
    std::abort();
}

}  // namespace sweep
