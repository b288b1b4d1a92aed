#pragma once

// The sockets of the service's own connections, which the HTTP library keeps to itself. They are found among
// the process's open files by their ports.

namespace TalvoConsentSDK::service {

/// The socket that connects this port of ours with `remotePort` of a peer, or -1. It stays open at least
/// until the request that is being handled on it has been answered.
int connectionSocket(int localPort, int remotePort);

/// Closes a connection in both directions: the peer sees its end, with or without an answer.
void shutDown(int socket);

/// Whether the peer has gone. Waits for that at most `milliseconds`.
bool hasPeerGone(int socket, int milliseconds);

/// Ends the waiting for further requests on every connection of this port of ours. Requests that were read
/// are still answered.
void endIdleConnections(int localPort);

}  // namespace TalvoConsentSDK::service
