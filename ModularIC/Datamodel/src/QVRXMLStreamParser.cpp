#include "QVRXMLStreamParser.h"

#include <libxml/SAX2.h>
#include <libxml/entities.h>
#include <libxml/parser.h>

#include <cstring>
#include <exception>
#include <string>
#include <unordered_map>

#include "QVRXMLErrorSilencer.h"
#include "QVRXMLSafeContext.h"

namespace {

// Entities are kept as references while parsing and expanded only when a
// value is read, so a small document whose entities refer to each other, or
// one large entity referred to many times, would expand to gigabytes there.
// Every value is measured as it would read before any is handed on.
class ExpansionBudget {
public:
    explicit ExpansionBudget(std::size_t inputSize)
        : m_left(inputSize * QVRXMLStreamParser::kMaxExpansionFactor +
                 QVRXMLStreamParser::kExpansionAllowance) {}

    // Charges what the entity references in the subtree's values add to them;
    // false once a value or the document goes over its limit.
    bool Charge(const xmlNode* node) {
        for (; node != nullptr; node = node->next) {
            if (node->type == XML_ELEMENT_NODE) {
                for (const xmlAttr* attr = node->properties; attr != nullptr; attr = attr->next)
                    if (!ChargeValue(attr->children)) return false;
                if (!ChargeValue(node->children) || !Charge(node->children)) return false;
            }
        }
        return true;
    }

private:
    // What the entity references of one node list (its text as a value read
    // from it comes out; elements are charged on their own) add to it. Plain
    // text costs nothing here: it is never longer than the document.
    bool ChargeValue(const xmlNode* list) {
        std::size_t size = 0;
        for (const xmlNode* node = list; node != nullptr && size <= kOver; node = node->next)
            if (node->type == XML_ENTITY_REF_NODE)
                size += EntitySize(xmlGetDocEntity(node->doc, node->name), node->doc, 0);
        if (size > QVRXMLStreamParser::kMaxValueBytes || size > m_left) return false;
        m_left -= size;
        return true;
    }

    std::size_t EntitySize(xmlEntityPtr entity, xmlDocPtr doc, int depth) {
        if (entity == nullptr || entity->content == nullptr) return 0;
        if (entity->etype == XML_INTERNAL_PREDEFINED_ENTITY) return 1;
        const auto known = m_entitySizes.find(entity);
        if (known != m_entitySizes.end()) return known->second;
        std::size_t size = kOver + 1;  // nested too deep reads as too large
        if (depth < kMaxDepth) size = ContentSize(entity->content, doc, depth + 1);
        m_entitySizes.emplace(entity, size);
        return size;
    }

    // The replacement text with the references in it expanded.
    std::size_t ContentSize(const xmlChar* content, xmlDocPtr doc, int depth) {
        std::size_t size = 0;
        const char* text = reinterpret_cast<const char*>(content);
        while (*text != '\0' && size <= kOver) {
            const char* amp = std::strchr(text, '&');
            if (amp == nullptr) {
                size += std::strlen(text);
                break;
            }
            size += static_cast<std::size_t>(amp - text);
            const char* semicolon = std::strchr(amp, ';');
            if (semicolon == nullptr || amp[1] == '#') {  // a character reference is one character
                size += 1;
                text = semicolon != nullptr ? semicolon + 1 : amp + 1;
                continue;
            }
            const std::string name(amp + 1, semicolon);
            size +=
                EntitySize(xmlGetDocEntity(doc, reinterpret_cast<const xmlChar*>(name.c_str())), doc, depth);
            text = semicolon + 1;
        }
        return size > kOver ? kOver + 1 : size;
    }

    // Sums stop growing past this, so they cannot overflow.
    static constexpr std::size_t kOver = std::size_t(1) << 40;
    static constexpr int kMaxDepth = 40;

    std::size_t m_left;
    std::unordered_map<const xmlEntity*, std::size_t> m_entitySizes;
};

struct StreamState {
    xmlParserCtxtPtr ctxt;
    QVRXMLStreamParser::Handler* handler;
    ExpansionBudget* budget;
    bool rootSeen;
    bool stopped;
    bool tooLarge;
    // A throw may not unwind through libxml2's frames: it waits here until the
    // parse has returned and its context is freed.
    std::exception_ptr failure;
};

// Runs a step of a callback, keeping what it throws for Parse to rethrow.
template <typename Step>
void Guarded(StreamState* state, Step step) {
    if (state->failure) return;
    try {
        step();
    } catch (...) {
        state->failure = std::current_exception();
        state->stopped = true;
        xmlStopParser(state->ctxt);
    }
}

// Hands every complete child of the root to the handler and frees it.
void FlushRootChildren(StreamState* state, xmlNodePtr root) {
    if (root == nullptr) return;
    xmlNodePtr child = root->children;
    while (child != nullptr) {
        xmlNodePtr next = child->next;
        if (!state->stopped && !state->tooLarge && !state->budget->Charge(child)) {
            state->tooLarge = true;
            xmlStopParser(state->ctxt);
        }
        if (!state->stopped && !state->tooLarge && !state->handler->OnRootChild(child)) {
            state->stopped = true;
            xmlStopParser(state->ctxt);
        }
        xmlUnlinkNode(child);
        xmlFreeNode(child);
        child = next;
    }
}

StreamState* OwnState(void* ctx) {
    xmlParserCtxtPtr ctxt = static_cast<xmlParserCtxtPtr>(ctx);
    StreamState* state = static_cast<StreamState*>(ctxt->_private);
    // libxml2 checks entity content with a context of its own that shares
    // these handlers; only the document's own context is streamed.
    return (state != nullptr && state->ctxt == ctxt) ? state : nullptr;
}

void StartElement(void* ctx, const xmlChar* localname, const xmlChar* prefix, const xmlChar* URI,
                  int nbNamespaces, const xmlChar** namespaces, int nbAttributes, int nbDefaulted,
                  const xmlChar** attributes) {
    StreamState* state = OwnState(ctx);
    // Text, comments and the like before a new child of the root are complete.
    if (state != nullptr && state->ctxt->nodeNr == 1)
        Guarded(state, [state] { FlushRootChildren(state, state->ctxt->nodeTab[0]); });
    xmlSAX2StartElementNs(ctx, localname, prefix, URI, nbNamespaces, namespaces, nbAttributes, nbDefaulted,
                          attributes);
    if (state != nullptr && !state->rootSeen && state->ctxt->nodeNr == 1) {
        state->rootSeen = true;
        xmlNode root = *state->ctxt->node;  // its attributes, without the children to come
        root.next = nullptr;
        root.children = nullptr;
        Guarded(state, [state, &root] {
            if (state->budget->Charge(&root)) {
                state->handler->OnRoot(state->ctxt->node);
            } else {
                state->tooLarge = true;
                xmlStopParser(state->ctxt);
            }
        });
    }
}

void EndElement(void* ctx, const xmlChar* localname, const xmlChar* prefix, const xmlChar* URI) {
    xmlSAX2EndElementNs(ctx, localname, prefix, URI);
    StreamState* state = OwnState(ctx);
    if (state == nullptr) return;
    if (state->ctxt->nodeNr == 1)
        Guarded(state, [state] {
            FlushRootChildren(state, state->ctxt->nodeTab[0]);
        });  // a child of the root closed
    else if (state->ctxt->nodeNr == 0)
        Guarded(state, [state] {
            FlushRootChildren(state, xmlDocGetRootElement(state->ctxt->myDoc));
        });  // the root closed
}

}  // namespace

QVRXMLStreamParser::Result QVRXMLStreamParser::Parse(const char* text, std::size_t length, Handler& handler) {
    QVRXMLErrorSilencer silence;
    xmlParserCtxtPtr ctxt = QVRNewSafeParserCtxt(text, length);
    if (ctxt == nullptr) return kNotWellFormed;
    ExpansionBudget budget(strnlen(text, length));
    StreamState state = {ctxt, &handler, &budget, false, false, false, nullptr};
    ctxt->_private = &state;
    ctxt->sax->startElementNs = &StartElement;
    ctxt->sax->endElementNs = &EndElement;
    xmlParseDocument(ctxt);
    Result result = kNotWellFormed;  // also for a document whose values expand too far
    if (state.tooLarge)
        result = kNotWellFormed;
    else if (state.stopped)
        result = kStopped;
    else if (ctxt->wellFormed)
        result = kWellFormed;
    if (ctxt->myDoc != nullptr) xmlFreeDoc(ctxt->myDoc);
    ctxt->myDoc = nullptr;
    xmlFreeParserCtxt(ctxt);
    if (state.failure) std::rethrow_exception(state.failure);
    return result;
}
