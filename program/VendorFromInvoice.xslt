<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the vendor record for the company that sent an invoice.

  Receives the root element of an exchange file (InvoiceRet; VendorFromEstimate.xslt uses
  the same templates for EstimateRet) and writes, from the sender's CompanyRet below it, the
  qbXML 1.1 message that adds the vendor, without declaration and DOCTYPE:

    <QBXML><QBXMLMsgsRq onError="stopOnError"><VendorAddRq requestID="1"><VendorAdd>
      Name, CompanyName  CompanyRet/CompanyName, first 41 letters (the conversion sheets
                         name the vendor the same way)
      VendorAddress      the address the sender shows its customers (else its own address)
      Phone, Fax         first 21 letters; Email
      NameOnCheck        the company name again
    </VendorAdd></VendorAddRq></QBXMLMsgsRq></QBXML>

  The sender's terms are left out: they name a terms entry of the sender's company file.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="*">
    <xsl:variable name="company" select="(.//CompanyRet)[1]"/>
    <xsl:variable name="name" select="substring($company/CompanyName, 1, 41)"/>
    <xsl:variable name="address" select="($company/CompanyAddressForCustomer[*[normalize-space(.) != '']]
                                          | $company/Address[*[normalize-space(.) != '']])[last()]"/>
    <QBXML>
      <QBXMLMsgsRq onError="stopOnError">
        <VendorAddRq requestID="1">
          <VendorAdd>
            <Name><xsl:value-of select="$name"/></Name>
            <CompanyName><xsl:value-of select="$name"/></CompanyName>
            <xsl:if test="$address">
              <VendorAddress>
                <xsl:for-each select="$address/Addr1 | $address/Addr2 | $address/Addr3 | $address/City
                                      | $address/State | $address/PostalCode | $address/Country">
                  <xsl:if test="normalize-space(.) != ''">
                    <xsl:element name="{local-name()}"><xsl:value-of select="."/></xsl:element>
                  </xsl:if>
                </xsl:for-each>
              </VendorAddress>
            </xsl:if>
            <xsl:if test="normalize-space($company/Phone) != ''">
              <Phone><xsl:value-of select="substring(normalize-space($company/Phone), 1, 21)"/></Phone>
            </xsl:if>
            <xsl:if test="normalize-space($company/Fax) != ''">
              <Fax><xsl:value-of select="substring(normalize-space($company/Fax), 1, 21)"/></Fax>
            </xsl:if>
            <xsl:if test="normalize-space($company/Email) != ''">
              <Email><xsl:value-of select="substring(normalize-space($company/Email), 1, 99)"/></Email>
            </xsl:if>
            <NameOnCheck><xsl:value-of select="$name"/></NameOnCheck>
          </VendorAdd>
        </VendorAddRq>
      </QBXMLMsgsRq>
    </QBXML>
  </xsl:template>

</xsl:stylesheet>
