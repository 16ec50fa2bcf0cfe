#include "sim/core/simulator.h"

#include "sim/core/json_values.h"

#include "sim/models/cards/card_reader_model.h"
#include "sim/models/control/control_model.h"
#include "sim/models/identity/identity_model.h"
#include "sim/models/lcd/lcd_model.h"
#include "sim/models/memcards/memory_card_model.h"
#include "sim/models/keyboard/keyboard_model.h"
#include "sim/models/mechanism/mechanism_model.h"
#include "sim/models/pinpad/keypad_model.h"
#include "sim/models/pinpad/pinpad_model.h"
#include "sim/models/rfcards/field_config.h"
#include "sim/models/rfcards/field_memory_model.h"
#include "sim/models/screen/screen_model.h"
#include "sim/models/scanner/scanner_model.h"
#include "sim/models/stripe/stripe_model.h"

namespace qz::sim {

std::shared_ptr<Terminal> make_terminal(const Scenario& scenario) {
    auto terminal = std::make_shared<Terminal>(FaultPlan(scenario.faults), scenario.shared);
    terminal->add_model(std::make_unique<ControlModel>(scenario.control, terminal->shared()));
    terminal->add_model(std::make_unique<IdentityModel>(parse_identity(scenario.document)));
    // PIN entries come from the script, or from a person at the keys (a web panel's user).
    if (const auto typing = scenario.document.find("person_types_pins"); typing != scenario.document.end()) {
        if (!typing->is_boolean()) throw ScenarioError("person_types_pins: expected true or false");
        terminal->person().typing = typing->get<bool>();
    }
    auto keypad = parse_keypad(scenario.document);
    keypad.entries.attach(terminal->person(), "keypad");
    terminal->add_model(std::make_unique<KeypadModel>(std::move(keypad)));
    auto pinpad = parse_pinpad(scenario.document);
    pinpad.entries.attach(terminal->person(), "PIN pad");
    terminal->add_model(std::make_unique<PinPadModel>(std::move(pinpad)));
    terminal->add_model(std::make_unique<LcdModel>());
    terminal->add_model(std::make_unique<ScreenModel>(parse_screen(scenario.document)));
    if (const auto cards = parse_cards(scenario.document))
        terminal->add_model(std::make_unique<CardReaderModel>(*cards));
    if (const auto memory_cards = parse_memory_cards(scenario.document))
        terminal->add_model(std::make_unique<MemoryCardModel>(*memory_cards));
    terminal->add_model(std::make_unique<StripeModel>(parse_stripe(scenario.document)));
    terminal->add_model(std::make_unique<ScannerModel>(parse_scanner(scenario.document)));
    terminal->add_model(std::make_unique<KeyboardModel>(parse_keyboard(scenario.document)));
    if (const auto mechanism = parse_mechanism(scenario.document))
        terminal->add_model(std::make_unique<MechanismModel>(*mechanism));
    if (auto field_cards = parse_field_memory(scenario.document))
        terminal->add_model(std::make_unique<FieldMemoryModel>(std::move(*field_cards), terminal->shared()));
    return terminal;
}

}  // namespace qz::sim
