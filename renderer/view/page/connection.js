// The socket to the renderer: what comes, what is asked, and finding the next renderer.

const RETRY_MS = 1000;

/** Says it with one sentence. */
export class RequestError extends Error {}

export class Connection extends EventTarget {
  #socket = null;
  #asked = new Map();
  #lastId = 0;
  #ended = false;

  constructor(address) {
    super();
    this.address = address;
    this.state = "connecting";
    this.#open();
  }

  get connected() { return this.state === "connected"; }

  /** Gives this socket up; the next one begins with everything. */
  reconnect() {
    this.#socket?.close();
  }

  acknowledge(sequence) {
    this.#send({ type: "ack", sequence });
  }

  /** Asks the plug-in. The answer's fields, or a RequestError. */
  request(code, data = {}) {
    return new Promise((resolve, reject) => {
      const id = ++this.#lastId;
      if (!this.#send({ type: "request", id, code, ...data })) return reject(new RequestError("There is no renderer."));
      this.#asked.set(id, { resolve, reject });
    });
  }

  #send(message) {
    if (this.#socket?.readyState !== WebSocket.OPEN) return false;
    this.#socket.send(JSON.stringify(message));
    return true;
  }

  #open() {
    const socket = this.#socket = new WebSocket(this.address);
    socket.binaryType = "arraybuffer";
    socket.onopen = () => {
      this.#ended = false;
      this.#become("connected");
    };
    socket.onmessage = ({ data }) => this.#take(data);
    socket.onclose = () => {
      for (const { reject } of this.#asked.values()) reject(new RequestError("The renderer has gone."));
      this.#asked.clear();
      this.#become(this.#ended ? "ended" : "gone");
      setTimeout(() => this.#open(), RETRY_MS);
    };
  }

  #become(state) {
    if (state === "gone" && this.state === "ended") return;
    this.state = state;
    this.dispatchEvent(new Event("state"));
  }

  #take(data) {
    if (typeof data !== "string") return this.#tell("binary", data);
    const message = JSON.parse(data);
    if (message.type === "answer" || (message.type === "error" && this.#asked.has(message.id))) {
      const asked = this.#asked.get(message.id);
      this.#asked.delete(message.id);
      const error = message.type === "error" ? message.text : message.error;
      return error ? asked?.reject(new RequestError(error)) : asked?.resolve(message);
    }
    if (message.session?.state === "ended") this.#ended = true;
    this.#tell(message.type, message);
  }

  #tell(type, detail) {
    this.dispatchEvent(new CustomEvent(type, { detail }));
  }
}
