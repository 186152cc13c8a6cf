#include "platform/session/KeyboardLayout.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

namespace vornic::platform {
namespace {

template <typename T, void (*Unref)(T*)>
struct Releaser {
    void operator()(T* object) const { Unref(object); }
};
using Context = std::unique_ptr<xkb_context, Releaser<xkb_context, xkb_context_unref>>;
using Keymap = std::unique_ptr<xkb_keymap, Releaser<xkb_keymap, xkb_keymap_unref>>;
using State = std::unique_ptr<xkb_state, Releaser<xkb_state, xkb_state_unref>>;
using Connection = std::unique_ptr<xcb_connection_t, Releaser<xcb_connection_t, xcb_disconnect>>;

constexpr std::size_t kMostCharacters = 255;

/// At most that many characters of a text, from its front.
void cutAfterMostCharacters(std::string& text) {
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool begins = (static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80U;
        if (begins && ++characters > kMostCharacters) {
            text.resize(i);
            return;
        }
    }
}

class XkbLayout : public KeyboardLayout {
  public:
    /// @param group the layout among those of the keymap
    XkbLayout(Keymap keymap, xkb_layout_index_t group)
        : keymap_(std::move(keymap)), group_(group) {}

    [[nodiscard]] std::optional<std::string> characters(std::uint32_t keyCode,
                                                        const Modifiers& held,
                                                        ErrorSlot& error) const override {
        if (keyCode < xkb_keymap_min_keycode(keymap_.get()) ||
            keyCode > xkb_keymap_max_keycode(keymap_.get())) {
            error = posixError("The keyboard has no key with the code " + std::to_string(keyCode),
                               EINVAL);
            return std::nullopt;
        }
        const State state = stateWith(held);
        const int size = xkb_state_key_get_utf8(state.get(), keyCode, nullptr, 0);
        std::string text(static_cast<std::size_t>(size), '\0');
        xkb_state_key_get_utf8(state.get(), keyCode, text.data(), text.size() + 1);
        cutAfterMostCharacters(text);
        return text;
    }

    [[nodiscard]] std::string keyName(std::uint32_t keyCode, const Modifiers& held) const override {
        constexpr std::size_t kLongestName = 64;
        const State state = stateWith(held);
        const xkb_keysym_t symbol = xkb_state_key_get_one_sym(state.get(), keyCode);
        std::array<char, kLongestName> name{};
        if (symbol == XKB_KEY_NoSymbol ||
            xkb_keysym_get_name(symbol, name.data(), name.size()) < 0) {
            return "";
        }
        return name.data();
    }

  private:
    [[nodiscard]] State stateWith(const Modifiers& held) const {
        xkb_mod_mask_t mask = 0;
        const auto add = [&](bool isHeld, const char* name) {
            const xkb_mod_index_t index = xkb_keymap_mod_get_index(keymap_.get(), name);
            if (isHeld && index != XKB_MOD_INVALID) {
                mask |= xkb_mod_mask_t{1} << index;
            }
        };
        add(held.shift, XKB_MOD_NAME_SHIFT);
        add(held.control, XKB_MOD_NAME_CTRL);
        add(held.option, XKB_MOD_NAME_ALT);
        add(held.command, XKB_MOD_NAME_LOGO);
        State state(xkb_state_new(keymap_.get()));
        xkb_state_update_mask(state.get(), mask, 0, 0, 0, 0, group_);
        return state;
    }

    Keymap keymap_;
    xkb_layout_index_t group_;
};

Context makeContext() {
    Context context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (context) {
        // A layout that cannot be had is told by the caller, in his words.
        xkb_context_set_log_fn(context.get(),
                               [](xkb_context*, xkb_log_level, const char*, va_list) {});
    }
    return context;
}

/// The layout of the display; null when there is none or it does not tell.
std::unique_ptr<KeyboardLayout> layoutOfDisplay(xkb_context* context) {
    const Connection display(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(display.get()) != 0 ||
        xkb_x11_setup_xkb_extension(
            display.get(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
            XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr) == 0) {
        return nullptr;
    }
    const std::int32_t keyboard = xkb_x11_get_core_keyboard_device_id(display.get());
    Keymap keymap(keyboard < 0 ? nullptr
                               : xkb_x11_keymap_new_from_device(context, display.get(), keyboard,
                                                                XKB_KEYMAP_COMPILE_NO_FLAGS));
    const State state(keymap ? xkb_x11_state_new_from_device(keymap.get(), display.get(), keyboard)
                             : nullptr);
    if (!state) {
        return nullptr;
    }
    const xkb_layout_index_t group =
        xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE);
    return std::make_unique<XkbLayout>(std::move(keymap), group);
}

}  // namespace

std::unique_ptr<KeyboardLayout> KeyboardLayout::current() {
    const char* const display = std::getenv("DISPLAY");
    const Context context = makeContext();
    if (context && display != nullptr && *display != '\0') {
        if (std::unique_ptr<KeyboardLayout> layout = layoutOfDisplay(context.get())) {
            return layout;
        }
    }
    return named(KeyboardNames::chosen());
}

std::unique_ptr<KeyboardLayout> KeyboardLayout::named(const KeyboardNames& names) {
    const Context context = makeContext();
    const xkb_rule_names rules{.rules = nullptr,
                               .model = names.model.c_str(),
                               .layout = names.layout.c_str(),
                               .variant = names.variant.c_str(),
                               .options = names.options.c_str()};
    Keymap keymap(
        context ? xkb_keymap_new_from_names(context.get(), &rules, XKB_KEYMAP_COMPILE_NO_FLAGS)
                : nullptr);
    return keymap ? std::make_unique<XkbLayout>(std::move(keymap), 0) : nullptr;
}

}  // namespace vornic::platform
