#include <unordered_map>

#include "salvage/Grammar.h"
#include "salvage/XMEMLParents.h"

namespace vornic::salvage {

namespace {

// A child that the format never has there, one that stands in the wrong order, and names that the
// format does not know, of which nothing can be said.
constexpr float kNever = 4.0F;
constexpr float kDisorder = 1.5F;
constexpr float kUnknown = 1.5F;
constexpr float kIncomplete = 1.0F;

std::uint32_t pairOf(NameId first, NameId second) {
    return std::uint32_t{first} << 16U | second;
}

class FCPXMLFormat final : public Format {
  public:
    FCPXMLFormat(const fcpxml::Definition& definition, NameTable& names) : definition_(definition) {
        const fcpxml::Catalogue& catalogue = fcpxml::Catalogue::shared();
        for (std::size_t id = 0; id < catalogue.size(); ++id) {
            const NameId name =
                names.idOf(catalogue.element(static_cast<fcpxml::ElementId>(id)).name);
            ids_.resize(std::max<std::size_t>(ids_.size(), name + 1U), fcpxml::kNoElement);
            ids_[name] = static_cast<fcpxml::ElementId>(id);
        }
        names.markKnown();
    }

    float costOfChild(NameId parent, NameId previous, NameId child) override {
        const fcpxml::ElementDefinition* const definition = definitionOf(parent);
        const fcpxml::ElementId id = idOf(child);
        if (definition == nullptr || id == fcpxml::kNoElement) {
            return kUnknown;
        }
        if (!definition->mentions(id)) {
            return kNever;
        }
        return definition->kind != fcpxml::ContentKind::elements ||
                       transitionsOf(parent, *definition).contains(pairOf(idOf(previous), id))
                   ? 0
                   : kDisorder;
    }

    float costOfText(NameId parent) override {
        const fcpxml::ElementDefinition* const definition = definitionOf(parent);
        if (definition == nullptr) {
            return kUnknown;
        }
        return definition->kind == fcpxml::ContentKind::mixed ? 0 : kNever;
    }

    float costOfEnd(NameId parent, NameId last) override {
        const fcpxml::ElementDefinition* const definition = definitionOf(parent);
        if (definition == nullptr || definition->kind != fcpxml::ContentKind::elements) {
            return 0;
        }
        return transitionsOf(parent, *definition).contains(pairOf(idOf(last), kEndId))
                   ? 0
                   : kIncomplete;
    }

  private:
    using Transitions = std::unordered_set<std::uint32_t>;
    static constexpr fcpxml::ElementId kEndId = fcpxml::kNoElement - 1;

    [[nodiscard]] fcpxml::ElementId idOf(NameId name) const {
        return name < ids_.size() ? ids_[name] : fcpxml::kNoElement;
    }
    [[nodiscard]] const fcpxml::ElementDefinition* definitionOf(NameId name) const {
        const fcpxml::ElementId id = idOf(name);
        return id == fcpxml::kNoElement ? nullptr : definition_.element(id);
    }

    // Which child may follow which, and behind which the element may end.
    const Transitions& transitionsOf(NameId parent, const fcpxml::ElementDefinition& definition) {
        const auto [found, isNew] = transitions_.try_emplace(parent);
        if (isNew) {
            using Model = fcpxml::ContentModel;
            const Model& model = *definition.content;
            std::vector<bool> isSeen(Model::kRefused, false);
            std::vector<Model::State> waiting{Model::kStart};
            isSeen[Model::kStart] = true;
            while (!waiting.empty()) {
                const Model::State state = waiting.back();
                waiting.pop_back();
                const fcpxml::ElementId from =
                    state == Model::kStart ? fcpxml::kNoElement : model.nameOf(state);
                if (model.mayEnd(state)) {
                    found->second.insert(pairOf(from, kEndId));
                }
                for (const fcpxml::ElementId child : model.names()) {
                    const Model::State next = model.next(state, child);
                    if (next == Model::kRefused) {
                        continue;
                    }
                    found->second.insert(pairOf(from, child));
                    if (!isSeen[next]) {
                        isSeen[next] = true;
                        waiting.push_back(next);
                    }
                }
            }
        }
        return found->second;
    }

    const fcpxml::Definition& definition_;
    // By name.
    std::vector<fcpxml::ElementId> ids_;
    std::unordered_map<NameId, Transitions> transitions_;
};

class XMEMLFormat final : public Format {
  public:
    explicit XMEMLFormat(NameTable& names) {
        std::string_view text = xmemlParentsText();
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            readLine(text.substr(0, end), names);
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        names.markKnown();
        known_ = names.size();
    }

    float costOfChild(NameId parent, NameId /*previous*/, NameId child) override {
        if (parent >= known_ || child >= known_) {
            return kUnknown;
        }
        return pairs_.contains(pairOf(parent, child))              ? 0
               : pairs_.contains(pairOf(parent, NameTable::kText)) ? kNever
                                                                   : kNever * 0.8F;
    }

    float costOfText(NameId parent) override {
        if (parent >= known_) {
            return 0.2F;
        }
        return pairs_.contains(pairOf(parent, NameTable::kText)) ? 0 : kNever;
    }

    float costOfEnd(NameId /*parent*/, NameId /*last*/) override { return 0; }

  private:
    void readLine(std::string_view line, NameTable& names) {
        const std::size_t colon = line.find(':');
        if (line.starts_with('#') || colon == std::string_view::npos) {
            return;
        }
        const NameId parent = names.idOf(line.substr(0, colon));
        line.remove_prefix(colon + 1);
        while (!line.empty()) {
            line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
            const std::string_view child = line.substr(0, line.find(' '));
            line.remove_prefix(child.size());
            if (!child.empty()) {
                pairs_.insert(
                    pairOf(parent, child == "#text" ? NameTable::kText : names.idOf(child)));
            }
        }
    }

    std::unordered_set<std::uint32_t> pairs_;
    std::size_t known_ = 0;
};

}  // namespace

std::unique_ptr<Format> makeFCPXMLFormat(const fcpxml::Definition& definition, NameTable& names) {
    return std::make_unique<FCPXMLFormat>(definition, names);
}

std::unique_ptr<Format> makeXMEMLFormat(NameTable& names) {
    return std::make_unique<XMEMLFormat>(names);
}

}  // namespace vornic::salvage
