#include "json/value.h"

#include <stdexcept>

namespace ravenjson {

// Destroys a tree of containers with bounded stack use: recurses up to kMaxDepth levels and puts
// deeper containers on a list, to be destroyed when the recursion has returned.
class Value::Teardown {
public:
    // Destroys `container`, as part of the teardown already running on this thread if there is one.
    static void destroy(ValueContainer* container) noexcept {
        if (current_ != nullptr) {
            current_->destroyOrDefer(container);
        } else {
            Teardown().run(container);
        }
    }

private:
    static constexpr int kMaxDepth = 64;

    void run(ValueContainer* container) noexcept {
        current_ = this;
        for (pending_ = container; pending_ != nullptr;) {
            delete std::exchange(pending_, pending_->nextPending_);
        }
        current_ = nullptr;
    }

    void destroyOrDefer(ValueContainer* container) noexcept {
        if (depth_ == kMaxDepth) {
            container->nextPending_ = pending_;
            pending_ = container;
            return;
        }
        ++depth_;
        delete container;
        --depth_;
    }

    static thread_local constinit Teardown* current_;

    ValueContainer* pending_ = nullptr;
    int depth_ = 0;
    Arena::DeallocationBatch batch_;
};

thread_local constinit Value::Teardown* Value::Teardown::current_ = nullptr;

void Value::destroyContainer() noexcept {
    if (kind_ == Kind::String) {
        delete payload_.container;
    } else if (kind_ == Kind::Object || kind_ == Kind::Array) {
        Teardown::destroy(static_cast<ValueContainer*>(payload_.container));
    }
}

Value::Value(Kind kind) : kind_(kind) {
    switch (kind) {
    case Kind::Boolean:
        payload_.boolean = false;
        break;
    case Kind::Double:
        payload_.floating = 0.0;
        break;
    case Kind::String:
        payload_.container = new Container<String>();
        break;
    case Kind::Object:
        payload_.container = new Container<Object>();
        break;
    case Kind::Array:
        payload_.container = new Container<Array>();
        break;
    default:
        break;
    }
}

void Value::copyContainer(const Value& other) {
    struct Copy {
        const Value* from;
        Value* to;
    };
    std::vector<Copy> pending;
    const auto copy = [&pending](const Value& from, Value& to) {
        if (from.kind_ == Kind::String) {
            to = Value(from.string());
        } else if (from.kind_ == Kind::Object || from.kind_ == Kind::Array) {
            to = Value(from.kind_);
            pending.push_back({&from, &to});
        } else {
            to.kind_ = from.kind_;
            to.payload_ = from.payload_;
        }
    };

    copy(other, *this);
    while (!pending.empty()) {
        const auto [from, to] = pending.back();
        pending.pop_back();
        if (from->isObject()) {
            Object& members = to->object();
            for (const auto& [key, member] : from->object()) {
                copy(member, members.try_emplace(members.end(), key)->second);
            }
        } else {
            Array& elements = to->array();
            elements.resize(from->array().size());
            for (std::size_t i = 0; i < elements.size(); ++i) {
                copy(from->array()[i], elements[i]);
            }
        }
    }
}

void Value::throwKindMismatch() {
    throw std::logic_error("This JSON value is of another kind.");
}

const Value* Value::find(std::string_view key) const noexcept {
    if (!isObject()) {
        return nullptr;
    }
    const auto member = object().find(key);
    return member == object().end() ? nullptr : &member->second;
}

Value* Value::find(std::string_view key) noexcept {
    return const_cast<Value*>(std::as_const(*this).find(key));
}

bool operator==(const Value& left, const Value& right) {
    struct Pair {
        const Value* left;
        const Value* right;
    };
    std::vector<Pair> pending{{&left, &right}};
    bool equal = true;
    while (equal && !pending.empty()) {
        const auto [a, b] = pending.back();
        pending.pop_back();
        if (a->kind() != b->kind()) {
            return false;
        }
        switch (a->kind()) {
        case Kind::Boolean:
            equal = a->boolean() == b->boolean();
            break;
        case Kind::Integer:
            equal = a->integer() == b->integer();
            break;
        case Kind::Double:
            equal = a->floating() == b->floating();
            break;
        case Kind::String:
            equal = a->string() == b->string();
            break;
        case Kind::Object: {
            const Value::Object& others = b->object();
            equal = a->object().size() == others.size();
            for (auto i = a->object().begin(), j = others.begin(); equal && j != others.end();
                 ++i, ++j) {
                equal = i->first == j->first;
                pending.push_back({&i->second, &j->second});
            }
            break;
        }
        case Kind::Array: {
            const Value::Array& others = b->array();
            equal = a->array().size() == others.size();
            for (std::size_t i = 0; equal && i < others.size(); ++i) {
                pending.push_back({&a->array()[i], &others[i]});
            }
            break;
        }
        default: // no payload
            break;
        }
    }
    return equal;
}

} // namespace ravenjson
