// A machine for the length of a scope: fresh state of GEN_MACHINE_INFO over scripted processors.
#ifndef TESTS_SUPPORT_PLAYED_MACHINE_H
#define TESTS_SUPPORT_PLAYED_MACHINE_H

#include "gen/machine/gen_machine_state.h"
#include "tests/support/gen_os_machine_fake.h"
#include "tests/support/message_recorder.h"

class PlayedMachine
{
public:
    explicit PlayedMachine(MachineDump const &machine) { gen_os_machine_fake_play(machine); }
    explicit PlayedMachine(std::string const &dump) : PlayedMachine(load_machine_dump(dump)) {}

    GEN_MACHINE_STATE &state() { return m_state; }
    std::vector<std::string> &calls() { return gen_os_machine_fake_calls(); }
    std::vector<RecordedMessage> messages() const { return m_messages.messages(); }

private:
    MessageRecorder const m_messages;
    GEN_MACHINE_STATE m_state;
};

#endif
