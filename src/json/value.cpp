#include "json/value.h"

#include <stdexcept>

namespace ravenjson {

/// Destroys one container after another. What is nested in a container goes with it, which costs
/// stack for each level; from a certain depth on it waits until the stack is free again.
class Value::Teardown {
public:
    /// Destroys the container, or has the teardown that is already under way on this thread do so.
    static void destroy(AbstractContainer* container) noexcept {
        if (current_ != nullptr) {
            current_->destroyNested(container);
        } else {
            Teardown().run(container);
        }
    }

private:
    static constexpr int kMaxDepth = 64;

    void run(AbstractContainer* container) noexcept {
        current_ = this;
        for (pending_ = container; pending_ != nullptr;) {
            delete std::exchange(pending_, pending_->nextPending_);
        }
        current_ = nullptr;
    }

    void destroyNested(AbstractContainer* container) noexcept {
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

    AbstractContainer* pending_ = nullptr;
    int depth_ = 0;
    Arena::FreeTogether freeTogether_;
};

thread_local constinit Value::Teardown* Value::Teardown::current_ = nullptr;

void Value::destroyContainer() noexcept {
    if (kind_ == Kind::String) {
        delete payload_.container;
    } else if (kind_ == Kind::Object || kind_ == Kind::Array) {
        Teardown::destroy(payload_.container);
    }
}

Value::AbstractContainer* Value::makeContainer(Kind kind) {
    switch (kind) {
    case Kind::String:
        return new Container<std::string>();
    case Kind::Object:
        return new Container<Object>();
    case Kind::Array:
        return new Container<Array>();
    default:
        return nullptr;
    }
}

Value::Value(Kind kind) : kind_(kind) {
    switch (kind) {
    case Kind::Double:
        payload_.floating = 0.0;
        break;
    case Kind::String:
    case Kind::Object:
    case Kind::Array:
        payload_.container = makeContainer(kind);
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

void Value::refuseKind() {
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
    while (!pending.empty()) {
        const auto [a, b] = pending.back();
        pending.pop_back();
        if (a->kind() != b->kind()) {
            return false;
        }
        switch (a->kind()) {
        case Kind::Boolean:
            if (a->boolean() != b->boolean()) {
                return false;
            }
            break;
        case Kind::Integer:
            if (a->integer() != b->integer()) {
                return false;
            }
            break;
        case Kind::Double:
            if (a->floating() != b->floating()) {
                return false;
            }
            break;
        case Kind::String:
            if (a->string() != b->string()) {
                return false;
            }
            break;
        case Kind::Object: {
            if (a->object().size() != b->object().size()) {
                return false;
            }
            auto other = b->object().begin();
            for (const auto& [key, member] : a->object()) {
                if (key != other->first) {
                    return false;
                }
                pending.push_back({&member, &other->second});
                ++other;
            }
            break;
        }
        case Kind::Array:
            if (a->array().size() != b->array().size()) {
                return false;
            }
            for (std::size_t i = 0; i < a->array().size(); ++i) {
                pending.push_back({&a->array()[i], &b->array()[i]});
            }
            break;
        default: // nothing but the kind
            break;
        }
    }
    return true;
}

} // namespace ravenjson
