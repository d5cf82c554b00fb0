// Keeping the program's settings between two runs. The table of names, kinds and defaults stands
// in settings.cpp and nowhere else.
#pragma once

namespace kvn {
class CRegister;
}

namespace kvn::document {

struct Settings;

// Where the settings lie in the store.
inline constexpr unsigned settingsRoot = 0x80000002u;
inline constexpr const char* settingsPath = "SOFTWARE\\Ombrelight\\Kestrelvane Settings\\";

// Throws typeMismatch for a stored number that is none and overflow for one too large; `settings`
// are the defaults then.
void LoadSettings(Settings& settings, const CRegister& store);

// A value that cannot be written is simply not kept.
void SaveSettings(const Settings& settings, CRegister& store);

} // namespace kvn::document
