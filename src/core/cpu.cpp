// Processor services.  ps_* are names that the interface fixes for what reads and writes the control registers.
#include "kels/cpu.h"

#include <cpuid.h>
#include <immintrin.h>
#include <x86intrin.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kels {
namespace {

// ---- CPUID ---------------------------------------------------------------------------------------------------------

constexpr unsigned kExtended = 0x80000000u;

struct Leaf {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
};

// All zeros for a leaf that the processor does not have.
Leaf cpuidLeaf(unsigned number) {
    Leaf leaf;
    if (kel_has_cpuid() == 0) return leaf;
    __cpuid(number & kExtended, leaf.eax, leaf.ebx, leaf.ecx, leaf.edx);
    const unsigned highest = leaf.eax;
    if (number == (number & kExtended)) return leaf;
    leaf = Leaf();
    if (highest >= number) __cpuid(number, leaf.eax, leaf.ebx, leaf.ecx, leaf.edx);
    return leaf;
}

int bitOf(unsigned word, int bit) {
    return static_cast<int>(word >> bit & 1);
}

// ---- control registers ---------------------------------------------------------------------------------------------

constexpr unsigned kPowerOnSsx = 0x1f80;
constexpr unsigned kRoundingSsx = 0x6000;
constexpr unsigned kRoundingPrecisionFpu = 0x0f00;

void ps_set_cw_fpu(unsigned cw) {
    const auto word = static_cast<uint16_t>(cw);
    asm volatile("fldcw %0" : : "m"(word));
}
unsigned ps_get_cw_fpu() {
    uint16_t word;
    asm volatile("fnstcw %0" : "=m"(word));
    return word;
}
unsigned ps_get_sw_fpu() {
    uint16_t word;
    asm volatile("fnstsw %0" : "=m"(word));
    return word;
}
void ps_clear_fpu() {
    asm volatile("fnclex");
}
// A bit that does not exist would be a fault.
void ps_set_ssx(unsigned word) {
    _mm_setcsr(word & 0xffff);
}
unsigned ps_get_ssx() {
    return _mm_getcsr();
}

// ---- symbols of the x87 words --------------------------------------------------------------------------------------

struct Pair {
    unsigned hardware, symbol;
};

constexpr Pair kExceptions[] = {{0x01, kelFpuInvalid},  {0x02, kelFpuDenormal},  {0x04, kelFpuZeroDivide},
                                {0x08, kelFpuOverflow}, {0x10, kelFpuUnderflow}, {0x20, kelFpuInexact}};
constexpr Pair kRoundings[] = {
    {0x000, kelFpuRoundNearest}, {0x400, kelFpuRoundDown}, {0x800, kelFpuRoundUp}, {0xc00, kelFpuRoundChop}};
constexpr Pair kPrecisions[] = {
    {0x300, kelFpuPrecision64}, {0x200, kelFpuPrecision53}, {0x000, kelFpuPrecision24}, {0x100, kelFpuPrecisionMask}};
constexpr Pair kInfinity = {0x1000, kelFpuAffineInfinity};

unsigned sw_bit2symbol(unsigned status) {
    unsigned symbols = 0;
    for (const Pair& p : kExceptions) symbols |= (status & p.hardware) != 0 ? p.symbol : 0;
    return symbols;
}
unsigned bit2symbol(unsigned control) {
    unsigned symbols = sw_bit2symbol(control);
    for (const Pair& p : kRoundings) symbols |= (control & 0xc00) == p.hardware ? p.symbol : 0;
    for (const Pair& p : kPrecisions) symbols |= (control & 0x300) == p.hardware ? p.symbol : 0;
    return symbols | ((control & kInfinity.hardware) != 0 ? kInfinity.symbol : 0);
}
unsigned symbol2bit(unsigned symbols) {
    unsigned control = 0;
    for (const Pair& p : kExceptions) control |= (symbols & p.symbol) != 0 ? p.hardware : 0;
    for (const Pair& p : kRoundings) control |= (symbols & kelFpuRoundMask) == p.symbol ? p.hardware : 0;
    for (const Pair& p : kPrecisions) control |= (symbols & kelFpuPrecisionMask) == p.symbol ? p.hardware : 0;
    return control | ((symbols & kInfinity.symbol) != 0 ? kInfinity.hardware : 0);
}

// What symbol2bit can make.
constexpr unsigned kKnownFpu = 0x1f3f;

constexpr uint64_t kExponent64 = 0x7ff0000000000000u;

uint64_t magnitudeBits(double x) {
    return std::bit_cast<uint64_t>(x) << 1 >> 1;
}

}  // namespace
}  // namespace kels

using namespace kels;

int kel_has_cpuid(void) {
    constexpr unsigned kIdentification = 0x200000;
    const auto before = __readeflags();
    __writeeflags(before ^ kIdentification);
    const auto after = __readeflags();
    __writeeflags(before);
    return ((before ^ after) & kIdentification) != 0 ? 1 : 0;
}

int kel_max_cpuid_input(void) {
    return static_cast<int>(cpuidLeaf(0).eax);
}

int kel_has_rdtsc(void) {
    return bitOf(cpuidLeaf(1).edx, 4);
}

int kel_is_mmx_extension(void) {
    return bitOf(cpuidLeaf(1).edx, 23);
}

int kel_is_ssx_extension(void) {
    return bitOf(cpuidLeaf(1).edx, 25);
}

int kel_is_vbz_extension(void) {
    return bitOf(cpuidLeaf(1).edx, 26);
}

int kel_is_vcz_extension(void) {
    return bitOf(cpuidLeaf(1).ecx, 0);
}

int kel_is_htt_extension(void) {
    const Leaf leaf = cpuidLeaf(1);
    const unsigned logicalProcessors = leaf.ebx >> 16 & 0xff;
    return bitOf(leaf.edx, 28) == 1 && logicalProcessors > 1 ? 1 : 0;
}

int kel_is_x64e_extension(void) {
    return bitOf(cpuidLeaf(kExtended + 1).edx, 29);
}

int kel_is_GenuineOrvex(void) {
    const Leaf leaf = cpuidLeaf(0);
    const unsigned vendor[] = {leaf.ebx, leaf.edx, leaf.ecx};
    return std::memcmp(vendor, "GenuineOrvex", sizeof vendor) == 0 ? 1 : 0;
}

int kel_get_talvine_ident(void) {
    const unsigned signature = cpuidLeaf(1).eax;
    const unsigned baseFamily = signature >> 8 & 0xf, stepping = signature & 0xf;
    const unsigned family = baseFamily == 0xf ? baseFamily + (signature >> 20 & 0xff) : baseFamily;
    const bool modelIsExtended = baseFamily == 0xf || baseFamily == 0x6;
    const unsigned model = (signature >> 4 & 0xf) | (modelIsExtended ? signature >> 12 & 0xf0 : 0);
    return static_cast<int>(family << 16 | model << 4 | stepping);
}

uint64_t kel_get_talvine_counter(void) {
    return __rdtsc();
}

int kel_clear_ssx(void) {
    const unsigned before = ps_get_ssx();
    ps_set_ssx(kPowerOnSsx);
    return static_cast<int>(before);
}

void kel_set_cw_fpu(int cw) {
    ps_set_cw_fpu(static_cast<unsigned>(cw));
}

void kel_set_cw_ssx(int cw) {
    ps_set_ssx(static_cast<unsigned>(cw));
}

void kel_set_rcpc_fpu(int cw) {
    const unsigned before = ps_get_cw_fpu();
    const unsigned after = (before & ~kRoundingPrecisionFpu) | (static_cast<unsigned>(cw) & kRoundingPrecisionFpu);
    if (after != before) ps_set_cw_fpu(after);
}

void kel_set_rc_ssx(int cw) {
    const unsigned before = ps_get_ssx();
    const unsigned after = (before & ~kRoundingSsx) | (static_cast<unsigned>(cw) & kRoundingSsx);
    if (after != before) ps_set_ssx(after);
}

int kel_tst_daz_ssx(void) {
    constexpr std::size_t kMaskOffset = 28;
    alignas(16) unsigned char state[512] = {};
    asm volatile("fxsave %0" : "=m"(state));
    unsigned mask;  // 0 on processors that do not report one, and these lack the bit
    std::memcpy(&mask, state + kMaskOffset, sizeof mask);
    return bitOf(mask, 6);
}

unsigned int kel_control87(unsigned int newCw, unsigned int mask) {
    const unsigned before = ps_get_cw_fpu();
    const unsigned symbols = (bit2symbol(before) & ~mask) | (newCw & mask);
    const unsigned after = (before & ~kKnownFpu) | symbol2bit(symbols);
    if (after != before) ps_set_cw_fpu(after);
    return bit2symbol(after);
}

unsigned int kel_status87(void) {
    return sw_bit2symbol(ps_get_sw_fpu());
}

unsigned int kel_clear87(void) {
    const unsigned before = kel_status87();
    ps_clear_fpu();
    return before;
}

int kel_isnan(double x) {
    return magnitudeBits(x) > kExponent64 ? 1 : 0;
}

int kel_finite(double x) {
    return magnitudeBits(x) < kExponent64 ? 1 : 0;
}
