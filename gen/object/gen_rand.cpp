#include "gen_rand_sys.h"

GEN_RAND::GEN_RAND(long seed) : m_state(static_cast<std::uint32_t>(seed)) {}

void GEN_RAND::set_seed(long seed)
{
    m_state = static_cast<std::uint32_t>(seed);
}

int GEN_RAND::get_rand()
{
    m_state = m_state * 214013 + 2531011;
    return static_cast<int>(m_state >> 16 & 0x7fff);
}
