#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <tuple>

#include "ports/registry.h"

namespace tavrix::test {

/// A registry in memory, names as bytes. Counts the keys that were opened and those still open.
class FakeRegistry final : public ports::Registry {
  public:
    int opened = 0;
    int open_now = 0;
    /// Every call throws.
    bool broken = false;

    void put(ports::RegistryRoot root, const std::string& key, const std::string& name,
             std::uint32_t type, std::string_view bytes) {
        keys_[{root, key}][name] = {type, {bytes.begin(), bytes.end()}};
    }

    std::unique_ptr<ports::RegistryKey> open(ports::RegistryRoot root,
                                             base::ByteView sub_key) override {
        if (broken) throw std::runtime_error("no registry");
        const auto found = keys_.find({root, std::string(base::chars_of(sub_key))});
        if (found == keys_.end()) return nullptr;
        ++opened;
        return std::make_unique<Key>(found->second, open_now);
    }

  private:
    using Values = std::map<std::string, ports::RegistryValue>;

    class Key final : public ports::RegistryKey {
      public:
        Key(const Values& values, int& open_now) : values_(values), open_now_(open_now) {
            ++open_now_;
        }
        ~Key() override { --open_now_; }
        std::optional<ports::RegistryValue> query(base::ByteView name,
                                                  std::size_t capacity_bytes) override {
            const auto found = values_.find(std::string(base::chars_of(name)));
            if (found == values_.end() || found->second.data.size() > capacity_bytes) {
                return std::nullopt;
            }
            return found->second;
        }

      private:
        const Values& values_;
        int& open_now_;
    };

    std::map<std::tuple<ports::RegistryRoot, std::string>, Values> keys_;
};

}  // namespace tavrix::test
