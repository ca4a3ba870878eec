#include "QVRXMLStreamParser.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>

#include "QVRXMLErrorSilencer.h"
#include "QVRXMLSafeContext.h"

namespace {

struct StreamState {
    xmlParserCtxtPtr ctxt;
    QVRXMLStreamParser::Handler* handler;
    bool rootSeen;
    bool stopped;
};

// Hands every complete child of the root to the handler and frees it.
void FlushRootChildren(StreamState* state, xmlNodePtr root) {
    if (root == nullptr) return;
    xmlNodePtr child = root->children;
    while (child != nullptr) {
        xmlNodePtr next = child->next;
        if (!state->stopped && !state->handler->OnRootChild(child)) {
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
    if (state != nullptr && state->ctxt->nodeNr == 1) FlushRootChildren(state, state->ctxt->nodeTab[0]);
    xmlSAX2StartElementNs(ctx, localname, prefix, URI, nbNamespaces, namespaces, nbAttributes, nbDefaulted,
                          attributes);
    if (state != nullptr && !state->rootSeen && state->ctxt->nodeNr == 1) {
        state->rootSeen = true;
        state->handler->OnRoot(state->ctxt->node);
    }
}

void EndElement(void* ctx, const xmlChar* localname, const xmlChar* prefix, const xmlChar* URI) {
    xmlSAX2EndElementNs(ctx, localname, prefix, URI);
    StreamState* state = OwnState(ctx);
    if (state == nullptr) return;
    if (state->ctxt->nodeNr == 1)
        FlushRootChildren(state, state->ctxt->nodeTab[0]);  // a child of the root closed
    else if (state->ctxt->nodeNr == 0)
        FlushRootChildren(state, xmlDocGetRootElement(state->ctxt->myDoc));  // the root closed
}

}  // namespace

QVRXMLStreamParser::Result QVRXMLStreamParser::Parse(const char* text, std::size_t length, Handler& handler) {
    QVRXMLErrorSilencer silence;
    xmlParserCtxtPtr ctxt = QVRNewSafeParserCtxt(text, length);
    if (ctxt == nullptr) return kNotWellFormed;
    StreamState state = {ctxt, &handler, false, false};
    ctxt->_private = &state;
    ctxt->sax->startElementNs = &StartElement;
    ctxt->sax->endElementNs = &EndElement;
    xmlParseDocument(ctxt);
    Result result = kNotWellFormed;
    if (state.stopped)
        result = kStopped;
    else if (ctxt->wellFormed)
        result = kWellFormed;
    if (ctxt->myDoc != nullptr) xmlFreeDoc(ctxt->myDoc);
    ctxt->myDoc = nullptr;
    xmlFreeParserCtxt(ctxt);
    return result;
}
