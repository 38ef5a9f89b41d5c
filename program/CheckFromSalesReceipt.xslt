<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: a sales receipt from another company, booked as a check paid to it.

  Receives the SalesReceiptRet of an exchange file (the sender's CompanyRet somewhere below
  it) and writes the qbXML 1.1 message that adds the check, without declaration and DOCTYPE:

    <QBXML><QBXMLMsgsRq onError="stopOnError"><CheckAddRq requestID="1"><CheckAdd>
      AccountRef/FullName      the paying bank account: the parameter "account"; empty by
                               default, for the import to fill in (it is the first AccountRef
                               of the message)
      PayeeEntityRef/FullName  the sender's CompanyRet/CompanyName (first 41 letters)
      RefNumber, TxnDate, Memo (the receipt's memo and its check number)
      Address                  the sender's address, as printed on a check
      ItemLineAdd, ItemGroupLineAdd and the sales-tax line as on a bill (BillFromInvoice.xslt)
    </CheckAdd></CheckAddRq></QBXMLMsgsRq></QBXML>
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="BillFromInvoice.xslt"/>

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <xsl:param name="account" select="''"/>

  <xsl:template match="SalesReceiptRet">
    <QBXML>
      <QBXMLMsgsRq onError="stopOnError">
        <CheckAddRq requestID="1">
          <CheckAdd>
            <AccountRef><FullName><xsl:value-of select="$account"/></FullName></AccountRef>
            <xsl:call-template name="vendor-ref"><xsl:with-param name="element">PayeeEntityRef</xsl:with-param></xsl:call-template>
            <xsl:call-template name="copy-text"><xsl:with-param name="node" select="RefNumber"/></xsl:call-template>
            <xsl:call-template name="copy-text"><xsl:with-param name="node" select="TxnDate"/></xsl:call-template>
            <xsl:call-template name="memo">
              <xsl:with-param name="extra-label">Check No. </xsl:with-param>
              <xsl:with-param name="extra" select="CheckNumber"/>
            </xsl:call-template>
            <xsl:call-template name="payee-address"/>
            <xsl:apply-templates mode="item-line" select="SalesReceiptLineRet | SalesReceiptLineGroupRet"/>
            <xsl:call-template name="tax-line"/>
          </CheckAdd>
        </CheckAddRq>
      </QBXMLMsgsRq>
    </QBXML>
  </xsl:template>

  <!-- The sender's address as qbXML 1.1 holds one: three lines, city, state, code, country. -->
  <xsl:template name="payee-address">
    <xsl:variable name="company" select="(.//CompanyRet)[1]"/>
    <xsl:variable name="address" select="($company/CompanyAddressForCustomer[*[normalize-space(.) != '']]
                                          | $company/Address[*[normalize-space(.) != '']])[last()]"/>
    <xsl:if test="$address">
      <Address>
        <xsl:for-each select="$address/Addr1 | $address/Addr2 | $address/Addr3 | $address/City
                              | $address/State | $address/PostalCode | $address/Country">
          <xsl:if test="normalize-space(.) != ''">
            <xsl:element name="{local-name()}"><xsl:value-of select="."/></xsl:element>
          </xsl:if>
        </xsl:for-each>
      </Address>
    </xsl:if>
  </xsl:template>

</xsl:stylesheet>
