"""A local SMTP sink for the e-mail tests.

Modes: "plain", "starttls" and "tls" (implicit TLS) run aiosmtpd and save every message (raw text, envelope,
decoded headers and each decoded part) in the given folder; "stall-greeting" greets and then
never answers; "stall-starttls" agrees to STARTTLS and then never starts the handshake.
Prints "READY <port>" once it listens on 127.0.0.1. Recipients whose address starts with
"reject" are refused with 550.
"""
import argparse
import email
import email.policy
import json
import logging
import os
import signal
import socket
import ssl
import sys
import threading
import warnings


def save_atomically(path, data):
    with open(path + ".tmp", "wb") as f:
        f.write(data)
    os.replace(path + ".tmp", path)


class Saver:
    def __init__(self, folder):
        self.folder = folder
        self.count = 0

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        if address.lower().startswith("reject"):
            return "550 5.1.1 No such user here"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        self.count += 1
        base = os.path.join(self.folder, "msg%d" % self.count)
        raw = envelope.original_content
        save_atomically(base + ".eml", raw)
        message = email.message_from_bytes(raw, policy=email.policy.default)
        parts = []
        for part in message.walk():
            if part.is_multipart():
                continue
            name = "%s.part%d" % (base, len(parts) + 1)
            save_atomically(name, part.get_payload(decode=True) or b"")
            parts.append({"type": part.get_content_type(), "filename": part.get_filename() or "",
                          "file": name})
        summary = {
            "from": envelope.mail_from,
            "to": envelope.rcpt_tos,
            "authenticated": bool(getattr(session, "authenticated", False)),
            "tls": session.ssl is not None or server.transport.get_extra_info("ssl_object") is not None,
            "headers": {key: str(value) for key, value in message.items()},
            "parts": parts,
        }
        save_atomically(base + ".json", json.dumps(summary).encode("utf-8"))
        return "250 OK"


def free_port(host):
    with socket.socket() as s:
        s.bind((host, 0))
        return s.getsockname()[1]


def run_aiosmtpd(args):
    from aiosmtpd.controller import Controller
    from aiosmtpd.smtp import AuthResult, LoginPassword

    kwargs = {}
    context = None
    if args.mode in ("starttls", "tls"):
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(args.cert, args.key)
    if args.mode == "starttls":
        kwargs["tls_context"] = context
        kwargs["require_starttls"] = True
    if args.auth:
        login, password = args.auth.split(":", 1)

        def authenticator(server, session, envelope, mechanism, auth_data):
            ok = (isinstance(auth_data, LoginPassword) and auth_data.login.decode() == login
                  and auth_data.password.decode() == password)
            return AuthResult(success=ok)

        kwargs["authenticator"] = authenticator
        kwargs["auth_required"] = True
        # aiosmtpd only knows about TLS it started itself (STARTTLS); under implicit TLS
        # the whole connection is encrypted already.
        kwargs["auth_require_tls"] = args.mode == "starttls"
    port = free_port(args.host)
    controller = Controller(Saver(args.dir), hostname=args.host, port=port,
                            ssl_context=context if args.mode == "tls" else None, **kwargs)
    controller.start()
    print("READY %d" % port, flush=True)
    stop = threading.Event()
    signal.signal(signal.SIGTERM, lambda *_: stop.set())
    stop.wait()
    controller.stop()


def run_stalling(args):
    listener = socket.socket()
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    listener.bind(("127.0.0.1", 0))
    listener.listen(8)
    print("READY %d" % listener.getsockname()[1], flush=True)
    held = []

    def serve(conn):
        held.append(conn)
        conn.sendall(b"220 sink ESMTP\r\n")
        if args.mode == "stall-greeting":
            return
        buffer = b""
        while True:
            data = conn.recv(4096)
            if not data:
                return
            buffer += data
            while b"\r\n" in buffer:
                line, buffer = buffer.split(b"\r\n", 1)
                verb = line.split(b" ")[0].upper()
                if verb in (b"EHLO", b"HELO"):
                    conn.sendall(b"250-sink\r\n250 STARTTLS\r\n")
                elif verb == b"STARTTLS":
                    conn.sendall(b"220 Ready to start TLS\r\n")
                    return  # and never shake hands
                else:
                    conn.sendall(b"250 OK\r\n")

    signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))
    while True:
        conn, _ = listener.accept()
        threading.Thread(target=serve, args=(conn,), daemon=True).start()


def main():
    # Refused handshakes and logins are what some tests are about: keep the output quiet.
    logging.getLogger("mail.log").setLevel(logging.CRITICAL)
    warnings.simplefilter("ignore")
    parser = argparse.ArgumentParser()
    parser.add_argument("--mode", default="plain",
                        choices=["plain", "starttls", "tls", "stall-greeting", "stall-starttls"])
    parser.add_argument("--dir", default=".")
    parser.add_argument("--cert")
    parser.add_argument("--key")
    parser.add_argument("--auth")
    parser.add_argument("--host", default="127.0.0.1")
    args = parser.parse_args()
    if args.mode.startswith("stall"):
        run_stalling(args)
    else:
        run_aiosmtpd(args)


if __name__ == "__main__":
    main()
