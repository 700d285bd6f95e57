# SPDX-License-Identifier: Apache-2.0
"""Real servers for the tests of what leaves the machine. They print the port that they listen on.

servers.py smtp FOLDER [CERTIFICATE KEY]   puts each mail into FOLDER: N.eml as it came, N.envelope (JSON), N.picture
                                           with what is attached. With a certificate it needs STARTTLS and a login.
servers.py ftp FOLDER                      takes files into FOLDER, as anna with the password secret.
"""
import asyncio
import email
import json
import logging
import os
import ssl
import sys
import warnings

warnings.simplefilter("ignore")


class Mails:
    def __init__(self, folder):
        self.folder = folder
        self.count = 0

    async def handle_DATA(self, server, session, envelope):
        self.count += 1
        name = os.path.join(self.folder, str(self.count))
        with open(name + ".eml", "wb") as file:
            file.write(envelope.content)
        for part in email.message_from_bytes(envelope.content).walk():
            if part.get_content_type() == "image/jpeg":
                with open(name + ".picture", "wb") as file:
                    file.write(part.get_payload(decode=True))
        told = {"from": envelope.mail_from, "to": envelope.rcpt_tos, "tls": session.ssl is not None,
                "login": session.auth_data.login.decode() if session.authenticated else ""}
        with open(name + ".envelope.new", "w") as file:
            json.dump(told, file)
        os.rename(name + ".envelope.new", name + ".envelope")
        return "250 taken"


def check_login(server, session, envelope, mechanism, data):
    from aiosmtpd.smtp import AuthResult
    good = data.login == b"anna" and data.password == b"secret"
    return AuthResult(success=good, handled=good, auth_data=data)


async def smtp(folder, certificate=None, key=None):
    from aiosmtpd.smtp import SMTP
    options = {}
    if certificate:
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate, key)
        options = {"tls_context": context, "require_starttls": True, "auth_required": True,
                   "authenticator": check_login}
    mails = Mails(folder)
    server = await asyncio.get_running_loop().create_server(
        lambda: SMTP(mails, hostname="localhost", **options), "127.0.0.1", 0)
    print(server.sockets[0].getsockname()[1], flush=True)
    await server.serve_forever()


def ftp(folder):
    from pyftpdlib.authorizers import DummyAuthorizer
    from pyftpdlib.handlers import FTPHandler
    from pyftpdlib.servers import FTPServer
    logging.disable(logging.CRITICAL)
    authorizer = DummyAuthorizer()
    authorizer.add_user("anna", "secret", folder, perm="elrw")
    FTPHandler.authorizer = authorizer
    server = FTPServer(("127.0.0.1", 0), FTPHandler)
    print(server.socket.getsockname()[1], flush=True)
    server.serve_forever()


if __name__ == "__main__":
    if sys.argv[1] == "smtp":
        asyncio.run(smtp(*sys.argv[2:]))
    else:
        ftp(sys.argv[2])
